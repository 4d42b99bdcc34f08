#include "silenced_output.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <stdexcept>

namespace torvik::proof {

SilencedOutput::SilencedOutput() : saved_(_dup(_fileno(stdout))) {
    std::fflush(stdout);
    const int nowhere = _open("NUL", _O_WRONLY);
    const bool silenced = saved_ >= 0 && nowhere >= 0 && _dup2(nowhere, _fileno(stdout)) >= 0;
    if (nowhere >= 0) _close(nowhere);
    if (silenced) return;
    if (saved_ >= 0) _close(saved_);
    throw std::runtime_error("standard output cannot be silenced");
}

SilencedOutput::~SilencedOutput() {
    std::fflush(stdout);
    _dup2(saved_, _fileno(stdout));
    _close(saved_);
}

}  // namespace torvik::proof
