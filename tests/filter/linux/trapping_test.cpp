// A host that has its processor trap floating-point exceptions.
#include <cfenv>
#include <string>

#include "filter/odd_cutoffs.h"
#include "filter/response_files.h"
#include "support/temporary_folder.h"

namespace torvik::test {
namespace {

constexpr int trapped = FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW | FE_INEXACT;

class TrappingHost : public FilterTest {
  protected:
    // Runs `action` with trapping enabled; a trap would end the program.
    template <class Action>
    void withTraps(Action action) {
        std::feclearexcept(FE_ALL_EXCEPT);
        ASSERT_NE(feenableexcept(trapped), -1);
        action();
        enabledAfterwards = fegetexcept();
        raisedAfterwards = std::fetestexcept(FE_ALL_EXCEPT);
        fedisableexcept(FE_ALL_EXCEPT);
    }

    int enabledAfterwards = 0;
    int raisedAfterwards = 0;
};

TEST_F(TrappingHost, IsNotTrappedByOddCutoffs) {
    int designs = 0;
    withTraps([&] {
        forEachOddDesign([&](const Design& design) {
            run(filter, design);
            ++designs;
        });
    });
    EXPECT_GT(designs, 10000);
}

TEST_F(TrappingHost, FindsItsTrapsAndNoExceptionAfterADesign) {
    withTraps([&] { run(filter, lowPassOf(option::butterworth, 4, NAN)); });
    EXPECT_EQ(enabledAfterwards, trapped);
    EXPECT_EQ(raisedAfterwards, 0);
}

TEST_F(TrappingHost, IsNotTrappedByOddSimulations) {
    make(lowPassOf(option::butterworth, 4, 0.2));
    const std::string file = temporaryFile("response.txt");
    withTraps([&] {
        for (const double number : oddAlphas) {
            for (const std::uint32_t kindWord : {std::uint32_t{0}, singlePrecision}) {
                writeFrequencyResponse(filter, kindWord, number, number, 1000, 3, file.c_str());
                writeFrequencyResponse(filter, kindWord, 10, 20, number, 3, file.c_str());
                writeStepResponse(filter, kindWord, number, number, 1000, 20, file.c_str());
                writeStepResponse(filter, kindWord, 0, 1, number, 20, file.c_str());
            }
        }
    });
    EXPECT_EQ(enabledAfterwards, trapped);
    EXPECT_EQ(raisedAfterwards, 0);
}

}  // namespace
}  // namespace torvik::test
