#include "platform/text_file.h"

namespace torvik::platform {

TextFile::TextFile(const char* name) : file_(std::fopen(name, "w")) {
    if (!file_) error_ = fileError();
}

void TextFile::write(std::string_view text) {
    if (file_ && error_ == 0 && std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size())
        error_ = fileError();
}

std::uint32_t TextFile::close() {
    if (file_ && std::fclose(file_.release()) != 0 && error_ == 0) error_ = fileError();
    return error_;
}

}  // namespace torvik::platform
