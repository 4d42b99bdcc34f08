#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

// Reads a file once, in bounded space and time. The folders linux/ and windows/ hold the same file name.
namespace bounded_toml {

enum class ReadResult : std::uint8_t { complete, notOpened, folder, noFile, notRead, tooLarge, tooSlow };

// Appends the contents of a file to `text`.
//   most      the largest number of bytes
//   patience  how long to wait for a pipe's other end (Linux; Windows reads files on a disk only)
// `text` is meaningful only if the result is `complete`. Throws std::bad_alloc.
[[nodiscard]] ReadResult readBounded(const std::string& path, std::size_t most, std::chrono::milliseconds patience,
                                     std::string& text);

}  // namespace bounded_toml
