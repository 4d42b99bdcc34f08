// Throws away what goes to standard output.
#pragma once

namespace torvik::proof {

// While it lives.
class SilencedOutput {
  public:
    // Throws std::runtime_error where the system does not let it.
    SilencedOutput();
    ~SilencedOutput();
    SilencedOutput(const SilencedOutput&) = delete;
    SilencedOutput& operator=(const SilencedOutput&) = delete;

  private:
    int saved_;
};

}  // namespace torvik::proof
