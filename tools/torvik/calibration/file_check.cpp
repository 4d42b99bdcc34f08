#include "calibration/file_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "calib/ucf_parser.h"
#include "failure.h"
#include "parameters/unit_names.h"

namespace torvik::tool {

namespace {

constexpr std::array<std::string_view, 4> sections{"ThisFile", "SensorPara", "GeometricalOffset", "Matrix_B"};

char lowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool equalBesidesCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, lowerCase, lowerCase);
}

/// The key of a line; none: it has no equals sign.
std::optional<std::string_view> keyOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const std::string_view key = line.substr(0, equals);
    const std::size_t last = key.find_last_not_of(" \t");
    return key.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

/// Goes through a file's lines once more and looks for those that no finding is about.
class UnreadLines {
  public:
    UnreadLines(std::string path, std::string_view text, CalibrationReport& report)
        : path_(std::move(path)), text_(text), report_(report), asked_(report) {}

    void find() {
        LineReader lines(text_);
        bool continued = false;
        for (std::size_t i = 0; i < lineLimit; ++i) {
            const auto line = lines.next();
            if (!line) return;
            number_ = lines.lineNumber();
            if (continued) {
                add(*line, "the rest of a line of more than 127 characters, read as a line of its own");
            } else if (!isComment(*line)) {
                line->front() == '[' ? enter(*line) : look(*line);
            }
            continued = lines.isCut();
        }
        const auto unread = lines.next();
        number_ = lines.lineNumber();
        if (unread) add(*unread, fmt::format("only the first {} lines are", lineLimit));
    }

  private:
    void add(std::string_view line, const std::string& reason) {
        report_.push_back({.kind = FindingKind::passedOver,
                           .file = path_,
                           .line = number_,
                           .section = section_,
                           .name = std::string(keyOf(line).value_or("")),
                           .text = std::string(line),
                           .reason = "not read: " + reason});
    }

    void enter(std::string_view line) {
        const std::size_t end = line.find(']');
        section_ = line.substr(1, end == std::string_view::npos ? end : end - 1);
        reading_ = false;
        if (end == std::string_view::npos) {
            add(line, "a section's name needs a closing bracket");
        } else if (entered_.contains(section_)) {
            add(line, "the section stands twice, and the first one counts");
        } else if (std::ranges::find(sections, section_) == sections.end()) {
            add(line, unknownSection());
        } else {
            reading_ = true;
        }
        entered_.insert(section_);
    }

    std::string unknownSection() const {
        const auto meant = std::ranges::find_if(
            sections, [this](std::string_view section) { return equalBesidesCase(section, section_); });
        return meant == sections.end() ? "calibration files have no such section"
                                       : fmt::format("is [{}] meant?", *meant);
    }

    void look(std::string_view line) {
        // Told with its section.
        if (!reading_ && !entered_.empty()) return;
        const bool isRead = std::ranges::any_of(
            asked_, [&](const Finding& finding) { return finding.file == path_ && finding.line == number_; });
        if (!isRead) add(line, reasonOf(line));
    }

    std::string reasonOf(std::string_view line) const {
        const auto key = keyOf(line);
        if (entered_.empty()) return "it stands before the first section";
        if (!key) return "neither a comment nor a key with an equals sign";
        for (const Finding& finding : asked_) {
            if (finding.file != path_ || finding.section != section_) continue;
            if (finding.name == *key && finding.line != 0)
                return fmt::format("the key stands in line {}, too, and the first one counts", finding.line);
            if (finding.name != *key && equalBesidesCase(finding.name, *key))
                return fmt::format("is {} meant?", finding.name);
        }
        for (const Finding& finding : asked_) {
            if (finding.file == path_ && finding.name == *key)
                return fmt::format("it belongs to [{}]", finding.section);
        }
        return "no key for a sensor and a file version like these";
    }

    std::string path_;
    std::string_view text_;
    CalibrationReport& report_;
    CalibrationReport asked_;
    std::size_t number_ = 1;
    std::string section_;
    bool reading_ = false;
    std::set<std::string> entered_;
};

std::string nameOf(const Finding& finding) {
    if (finding.section.empty()) return utf8FromDevice(finding.name);
    return fmt::format("[{}] {}", utf8FromDevice(finding.section), utf8FromDevice(finding.name));
}

std::string_view wordOf(FindingKind kind) {
    switch (kind) {
        case FindingKind::byDefault:
            return "default";
        case FindingKind::passedOver:
            return "note";
        case FindingKind::problem:
            return "PROBLEM";
        default:
            return "";
    }
}

std::string findingLine(const Finding& finding) {
    const std::string line = finding.line == 0 ? "-" : fmt::format("{}", finding.line);
    std::string text = fmt::format("{:>6}  {:<8} {:<30}", line, wordOf(finding.kind), nameOf(finding));
    if (!finding.text.empty()) text += " " + utf8FromDevice(finding.text);
    if (!finding.reason.empty()) text += fmt::format("{}({})", finding.text.empty() ? " " : "   ", finding.reason);
    return text + "\n";
}

/// In the order in which they were read.
std::vector<std::string> filesOf(const CalibrationReport& report) {
    std::vector<std::string> files;
    for (const Finding& finding : report) {
        if (std::ranges::find(files, finding.file) == files.end()) files.push_back(finding.file);
    }
    return files;
}

std::string counted(const CalibrationReport& report, FindingKind kind, std::string_view word) {
    const auto count = std::ranges::count(report, kind, &Finding::kind);
    return fmt::format("{} {}{}", count, word, count == 1 ? "" : "s");
}

}  // namespace

CheckedFile checkFile(const std::string& path) {
    // The calibration file is read first, and only once.
    std::optional<std::string> firstText;
    const FileReader files = [&firstText, onDisk = filesOnDisk()](const std::string& name, std::string& text) {
        const std::uint32_t code = onDisk(name, text);
        if (code == 0 && !firstText) firstText = text;
        return code;
    };
    CheckedFile checked;
    checkCalibrationFile(path.c_str(), checked.calibration, checked.report, files);
    if (!firstText) {
        throw Failure{.exitCode = ExitCode::usage,
                      .tried = fmt::format("reading the calibration file '{}'", path),
                      .reason = checked.report.back().reason,
                      .advice = "check the path"};
    }
    addUnreadLines(path, *firstText, checked.report);
    return checked;
}

void addUnreadLines(const std::string& path, std::string_view text, CalibrationReport& report) {
    UnreadLines(path, text, report).find();
}

std::string checkPage(const CalibrationReport& report) {
    std::string page;
    for (const std::string& file : filesOf(report)) {
        page += file + "\n";
        for (const Finding& finding : report) {
            if (finding.file == file) page += findingLine(finding);
        }
    }
    fmt::format_to(std::back_inserter(page), "{}, {}, {}, {}\n", counted(report, FindingKind::value, "value"),
                   counted(report, FindingKind::byDefault, "default"), counted(report, FindingKind::passedOver, "note"),
                   counted(report, FindingKind::problem, "problem"));
    for (const std::string& problem : problemLines(report))
        page += problem + "\n";
    return page;
}

std::vector<std::string> problemLines(const CalibrationReport& report) {
    std::vector<std::string> lines;
    for (const Finding& finding : report) {
        if (finding.kind != FindingKind::problem) continue;
        const std::string place = finding.line == 0 ? "" : fmt::format("{}:", finding.line);
        const std::string name = nameOf(finding);
        lines.push_back(fmt::format("{}:{} {}{}{} (code 0x{:X})", finding.file, place, name, name.empty() ? "" : ": ",
                                    finding.reason, finding.code));
    }
    return lines;
}

}  // namespace torvik::tool
