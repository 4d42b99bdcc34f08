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

std::uint32_t readFile(const char* name, std::size_t limit, std::string& text) {
    const File file(std::fopen(name, "rb"));
    if (!file) return fileError();
    constexpr std::size_t portion = 65536;
    text.clear();
    std::size_t got = portion;
    while (got == portion && text.size() < limit) {
        const std::size_t before = text.size();
        text.resize(before + portion);
        got = std::fread(text.data() + before, 1, portion, file.get());
        text.resize(before + got);
    }
    return std::ferror(file.get()) != 0 ? fileError() : 0;
}

}  // namespace torvik::platform
