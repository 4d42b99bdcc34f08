// The reference from another language: python-can drains and decodes the same frames in a process of its own, which is
// started once and works only when it is asked to.
#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bare_loop.h"
#include "benchmarks.h"
#include "frames.h"

namespace torvik::bench {

namespace {

class Python {
  public:
    Python() {
        int ends[2] = {-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        std::string program = "/usr/bin/python3";
        std::string script = PYTHON_CAN_LOOP;
        char* const arguments[] = {program.data(), script.data(), nullptr};
        if (posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ) != 0) process_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        requests_ = fdopen(fcntl(ends[0], F_DUPFD_CLOEXEC, 0), "w");
        results_ = fdopen(ends[0], "r");
    }

    ~Python() {
        if (requests_ != nullptr) std::fclose(requests_);
        if (results_ != nullptr) std::fclose(results_);
        if (process_ > 0) waitpid(process_, nullptr, 0);
    }

    Python(const Python&) = delete;
    Python& operator=(const Python&) = delete;

    struct Result {
        unsigned long frames = 0;
        double sum = 0.0;
        double seconds = 0.0;
    };

    bool send(const std::vector<PcanMessage>& frames) {
        const std::uint64_t count = frames.size();
        return requests_ != nullptr && results_ != nullptr && std::fwrite(&count, sizeof count, 1, requests_) == 1 &&
               std::fwrite(frames.data(), sizeof(PcanMessage), frames.size(), requests_) == frames.size();
    }

    // Lets the process drain the frames once.
    bool drain(Result& result) {
        if (std::fputc('\n', requests_) == EOF || std::fflush(requests_) != 0) return false;
        return std::fscanf(results_, "%lu %lf %lf", &result.frames, &result.sum, &result.seconds) == 3;
    }

  private:
    pid_t process_ = -1;
    std::FILE* requests_ = nullptr;
    std::FILE* results_ = nullptr;
};

Python* python() {
    static Python process;
    static const bool ready = process.send(makeQueue(queueLength));
    return ready ? &process : nullptr;
}

double sumOfQueue() {
    BareLoop loop;
    loop.run(makeQueue(queueLength));
    return loop.sum();
}

void pythonCan(benchmark::State& state) {
    static const double expectedSum = sumOfQueue();
    for ([[maybe_unused]] auto _ : state) {
        Python::Result result;
        if (python() == nullptr || !python()->drain(result)) return state.SkipWithError("python3-can does not run");
        state.SetIterationTime(result.seconds);
        state.counters[IterationTimes::median] = result.seconds;
        if (result.frames != queueLength || result.sum != expectedSum) return state.SkipWithError("wrong values");
    }
}

}  // namespace

void registerPythonCan() {
    registerManual(name::receivePythonCan, pythonCan, 1);
}

}  // namespace torvik::bench
