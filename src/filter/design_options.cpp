#include <algorithm>
#include <bit>
#include <string_view>

#include "filter/design_steps.h"
#include "filter/filter_options.h"
#include "filter/text_buffer.h"

namespace torvik {

namespace {

constexpr std::int32_t highestBesselOrder = 10;  // where the table of poles ends

class OptionCheck {
  public:
    explicit OptionCheck(Dfilter& filter) : filter_(filter) {}

    bool has(std::uint32_t flags) const { return (filter_.options & flags) != 0; }
    bool hasOneOf(std::uint32_t flags) const { return std::has_single_bit(filter_.options & flags); }

    void require(bool condition, std::string_view message) {
        if (!condition) refuse().text(message);
    }

    void requireOrder() {
        const bool inRange = filter_.order >= 1 && filter_.order <= highestOrder;
        const std::int32_t highest = inRange && has(option::bessel) ? highestBesselOrder : highestOrder;
        if (!inRange || filter_.order > highest) refuse().text("order must be in range 1 .. ").integer(highest);
    }

    void requireMaskBelowOrder() {
        const auto order = static_cast<std::uint32_t>(std::clamp(filter_.order, 0, 32));
        if (order < 32 && filter_.poleMask >> order != 0) {
            refuse()
                .text("order=")
                .integer(filter_.order)
                .text(", so args to -p must be in range 0 .. ")
                .integer(std::int64_t{filter_.order} - 1);
        }
    }

  private:
    TextBuffer refuse() {
        filter_.optionsOk = false;
        filter_.errorCode = filter_error::wrongArguments;
        filter_.message.fill('\0');
        return TextBuffer(std::span(filter_.message).first(filter_.message.size() - 1));
    }

    Dfilter& filter_;
};

void checkPlainKind(OptionCheck& check) {
    check.require(check.hasOneOf(option::plainKinds), "must specify exactly one of -Lp, -Hp, -Bp, -Bs");
    check.require(!check.has(option::allPass), "-Ap implies -Re");
    if (!check.has(option::order)) {
        check.require(false, "must specify -o");
        return;
    }
    check.requireOrder();
    if (check.has(option::poleMask)) check.requireMaskBelowOrder();
}

}  // namespace

void checkOptions(Dfilter& filter) {
    using namespace option;
    filter.optionsOk = true;
    OptionCheck check(filter);
    check.require(check.hasOneOf(prototypes), "must specify exactly one of -Be, -Bu, -Ch, -Re, -Pi");
    if (check.has(resonator)) {
        check.require(check.hasOneOf(bandKinds | allPass), "must specify exactly one of -Bp, -Bs, -Ap with -Re");
        check.require(!check.has(lowPass | highPass | order | poleMask | noPrewarp | matchedZ),
                      "can't use -Lp, -Hp, -o, -p, -w, -z with -Re");
    } else if (check.has(proportionalIntegral)) {
        check.require(!check.has(plainKinds | allPass), "-Lp, -Hp, -Bp, -Bs, -Ap illegal in conjunction with -Pi");
        check.require(check.has(order) && filter.order == 1, "-Pi implies -o 1");
    } else {
        checkPlainKind(check);
    }
    check.require(check.has(cutoffs), "must specify -a");
}

}  // namespace torvik
