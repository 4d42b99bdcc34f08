#include "error_meanings.h"

#include <algorithm>
#include <array>
#include <bit>

#include "core/error_codes.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t noAdapterLibrary = 0x10000;
constexpr std::uint32_t systemCodeMask = 0xFFFF;

std::span<const ErrorMeaning> meaningsOf(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::device:
            return deviceMeanings();
        case ErrorKind::adapter:
            return adapterMeanings();
        default:
            return libraryMeanings();
    }
}

const ErrorMeaning* findMeaning(ErrorKind kind, std::uint32_t code, std::size_t occurrence) {
    for (const ErrorMeaning& meaning : meaningsOf(kind)) {
        if (meaning.code == code && occurrence-- == 0) return &meaning;
    }
    return nullptr;
}

void appendRows(std::uint32_t code, std::vector<Explanation>& explanations) {
    std::array<std::size_t, 4> occurrences{};
    for (const ErrorRow& row : errorRows()) {
        if (row.code != code || row.text == nullptr) continue;
        std::size_t& occurrence = occurrences.at(static_cast<std::size_t>(row.kind));
        const ErrorMeaning* meaning = findMeaning(row.kind, code, occurrence++);
        explanations.push_back({row.kind, code, row.text, std::string(meaning ? meaning->meaning : ""),
                                std::string(meaning ? meaning->advice : "")});
    }
}

void appendWithoutText(std::uint32_t code, std::vector<Explanation>& explanations) {
    for (const TextlessMeaning& row : textlessMeanings()) {
        const bool meant = row.isMark ? code != row.code && (code & ~systemCodeMask) == row.code : code == row.code;
        if (!meant) continue;
        explanations.push_back(
            {ErrorKind::library, code, std::string(row.text), std::string(row.meaning), std::string(row.advice)});
    }
}

std::vector<Explanation> explainAdapterBits(std::uint32_t code) {
    std::vector<Explanation> explanations;
    for (std::uint32_t rest = code; rest != 0; rest &= rest - 1) {
        const std::uint32_t bit = std::uint32_t{1} << std::countr_zero(rest);
        const auto rows = errorRows();
        const auto row = std::find_if(rows.begin(), rows.end(), [bit](const ErrorRow& candidate) {
            return candidate.kind == ErrorKind::adapter && candidate.code == bit;
        });
        const ErrorMeaning* meaning = findMeaning(ErrorKind::adapter, bit, 0);
        if (row == rows.end() || meaning == nullptr) return {};
        explanations.push_back(
            {ErrorKind::adapter, bit, row->text, std::string(meaning->meaning), std::string(meaning->advice)});
    }
    return explanations;
}

}  // namespace

std::vector<Explanation> explain(std::uint32_t code) {
    std::vector<Explanation> explanations;
    if (code == 0) return explanations;
    appendRows(code, explanations);
    appendWithoutText(code, explanations);
    return explanations.empty() ? explainAdapterBits(code) : explanations;
}

std::string errorText(std::uint32_t code) {
    if (code == error::none) return "no error exists";
    std::array<char, 128> text{};
    formatError(code, text);
    return text.data();
}

std::string_view kindName(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::device:
            return "device";
        case ErrorKind::adapter:
            return "CAN adapter";
        default:
            return "library";
    }
}

bool concernsAdapter(std::uint32_t code) {
    constexpr std::array<std::uint32_t, 4> codes{noAdapterLibrary, error::eventCreation, error::threadStart,
                                                 error::mutexStart};
    if (std::ranges::find(codes, code) != codes.end()) return true;
    // 0x40..0x99 are refusals by the device: two of them look like adapter codes.
    if (code == 0 || code == error::wrongFrameArguments || (code >= 0x40 && code <= 0x99)) return false;
    const std::vector<Explanation> explanations = explain(code);
    return !explanations.empty() && explanations.front().kind == ErrorKind::adapter;
}

}  // namespace torvik::tool
