#include "calib/reading_notes.h"

#include <utility>

namespace torvik {

namespace {

constexpr std::string_view missing = "missing";

std::string rowName(std::size_t row) {
    return "row " + std::to_string(row);
}

std::string joined(std::span<const double> numbers) {
    std::string text;
    for (const double number : numbers) {
        if (!text.empty()) text += ' ';
        text += shortestText(number);
    }
    return text;
}

}  // namespace

void ReadingNotes::tell(Key key, const std::string& taken, std::string_view fault) {
    if (report_ == nullptr) return;
    const std::size_t line = file_.lineOf(key.section, key.name);
    const FindingKind ofFault = line == 0 ? FindingKind::byDefault : FindingKind::passedOver;
    add({.kind = fault.empty() ? FindingKind::value : ofFault,
         .file = path_,
         .line = line,
         .section = std::string(key.section),
         .name = std::string(key.name),
         .text = taken,
         .reason = std::string(line == 0 ? missing : fault)});
}

void ReadingNotes::refuse(Key key, std::string_view fault, std::uint32_t code) {
    if (report_ == nullptr) throw ReadingFailure{code};
    const std::size_t line = file_.lineOf(key.section, key.name);
    add({.kind = FindingKind::problem,
         .file = path_,
         .line = line,
         .section = std::string(key.section),
         .name = std::string(key.name),
         .reason = std::string(line == 0 ? missing : fault),
         .code = code});
}

void ReadingNotes::refuseLater(Key key, std::string_view fault, std::uint32_t code) {
    if (report_ != nullptr) refuse(key, fault, code);
}

void ReadingNotes::tellRow(const std::string& path, std::size_t line, std::size_t row, std::span<const double> numbers,
                           std::string_view fault) {
    if (report_ == nullptr) return;
    add({.kind = fault.empty() ? FindingKind::value : FindingKind::passedOver,
         .file = path,
         .line = line,
         .name = rowName(row),
         .text = joined(numbers),
         .reason = std::string(fault)});
}

void ReadingNotes::refuseRow(const std::string& path, std::size_t line, std::size_t row, std::string_view fault) {
    if (report_ == nullptr) throw ReadingFailure{error::fileContent};
    add({.kind = FindingKind::problem,
         .file = path,
         .line = line,
         .name = rowName(row),
         .reason = std::string(fault),
         .code = error::fileContent});
}

void ReadingNotes::refuseFile(const std::string& path, std::uint32_t code) {
    if (report_ == nullptr) throw ReadingFailure{code};
    add(unreadableFile(path, code));
}

void ReadingNotes::add(Finding finding) {
    report_->push_back(std::move(finding));
}

}  // namespace torvik
