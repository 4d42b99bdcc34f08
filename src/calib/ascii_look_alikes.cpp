#include "calib/ascii_look_alikes.h"

#include <array>

namespace torvik {

namespace {

constexpr char dropped = '\0';

// One row for sixteen bytes, from 0x80 on.
constexpr std::array<char, 128> lookAlikes = {
    'E',     dropped, ',',  'f', '"',  '.',  '+', '#', '\'', '%', 'S',  '<', 'C', dropped, 'Z', dropped,
    dropped, '\'',    '\'', '"', '"',  '\'', '-', '_', '~',  'M', 's',  '>', 'o', dropped, 'z', 'Y',
    ' ',     'i',     'c',  'L', '*',  'Y',  '|', '$', '"',  'C', 'a',  '<', '-', '-',     'R', '-',
    '\'',    '+',     '2',  '3', '\'', 'u',  '|', '*', ',',  '1', '\'', '>', '4', '2',     '3', '?',
    'A',     'A',     'A',  'A', 'A',  'A',  'A', 'C', 'E',  'E', 'E',  'E', 'I', 'I',     'I', 'I',
    'D',     'N',     'O',  'O', 'O',  'O',  'O', 'x', 'O',  'U', 'U',  'U', 'U', 'Y',     'P', 'Y',
    'a',     'a',     'a',  'a', 'a',  'a',  'a', 'c', 'e',  'e', 'e',  'e', 'i', 'i',     'i', 'i',
    'o',     'n',     'o',  'o', 'o',  'o',  'o', '/', 'o',  'u', 'u',  'u', 'u', 'y',     'P', 'y',
};

}  // namespace

std::string replacedByLookAlikes(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const char replacement = byte < 0x80 ? character : lookAlikes[byte - 0x80U];
        if (byte < 0x80 || replacement != dropped) result += replacement;
    }
    return result;
}

}  // namespace torvik
