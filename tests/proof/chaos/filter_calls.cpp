#include "TORVIK.h"
#include "random_call.h"

namespace torvik::proof {

namespace {

using u32 = std::uint32_t;

template <class Signature>
using C = Caller<Signature>;

// A filter of the highest order has this many coefficients.
constexpr std::size_t mostCoefficients = 16;

const auto points = [](Arguments& any) { return any.onceIn(8) ? 0 : any.below(1500); };
const auto outputFile = [](Arguments& any) { return any.outputFile(); };

// Those of calibrations and filters take many commands: chosen less often.
constexpr double seldom = 5;

// These use the designer, which a release destroys, for long and without a wait.
constexpr double often = 40;

}  // namespace

std::vector<RandomCall> filterCalls() {
    return {
        C<decltype(TORVIKgetDfilterOnOff)>::make("TORVIKgetDfilterOnOff", 1, one<u32>),
        C<decltype(TORVIKsetDfilterOnOff)>::make("TORVIKsetDfilterOnOff", 2, number, number, number),
        C<decltype(TORVIKgetDfilterInfo)>::make("TORVIKgetDfilterInfo", 4, number, number, one<u32>, reals<2>),
        C<decltype(TORVIKgetDigiFiltType)>::make("TORVIKgetDigiFiltType", 1, number, byte, one<u32>)
            .onlyInStorms(),  // never succeeds
        C<decltype(TORVIKgetDfilterCoeff)>::make("TORVIKgetDfilterCoeff", 9, number, number, reals<5>, reals<4>)
            .weighing(30),
        C<decltype(TORVIKstoreDigitalFilter)>::make("TORVIKstoreDigitalFilter", 1, number, number),
        C<decltype(TORVIKsetDfilterParams)>::make("TORVIKsetDfilterParams", 35, number, number, reals<2>,
                                                  reals<mostCoefficients>, reals<mostCoefficients>)
            .weighing(seldom),
        C<decltype(TORVIKcalcSetDfilterParams)>::make("TORVIKcalcSetDfilterParams", 36, number, number, number, number,
                                                      number, real, real)
            .weighing(often),
        C<decltype(TORVIKsimulateDfilter)>::make("TORVIKsimulateDfilter", 1, number, real, real, real, points,
                                                 outputFile)
            .weighing(often),
    };
}

std::vector<RandomCall> calibrationCalls() {
    // What the largest calibration needs; its pauses are the stream's stop and start.
    constexpr std::size_t mostElements = 256;
    constexpr int allElements = 560;
    const auto factors = numbers<6>;
    const auto calibrationFile = [](Arguments& any) { return any.calibrationFile(); };
    return {
        C<decltype(TORVIKreadFTSensorCalValue)>::make("TORVIKreadFTSensorCalValue", 1, number, byte, one<double>),
        C<decltype(TORVIKsetFTarrayToRead)>::make("TORVIKsetFTarrayToRead", 1, byte),
        C<decltype(TORVIKreadFTSensorSerNo)>::make("TORVIKreadFTSensorSerNo", 2, number, many<char, 9>),
        C<decltype(TORVIKreadFTSensorCalArray)>::make("TORVIKreadFTSensorCalArray", 60, number, many<char, 9>,
                                                      one<double>, one<double>, reals<36>, reals<3>, reals<6>)
            .weighing(seldom),
        C<decltype(TORVIKwriteFTSensorCalArray)>::make("TORVIKwriteFTSensorCalArray", 60, number, text<9>, real, real,
                                                       reals<36>, reals<3>, reals<6>)
            .weighing(seldom),
        C<decltype(TORVIKreadFTsensorCalArrayA)>::make("TORVIKreadFTsensorCalArrayA", allElements, number,
                                                       many<char, 9>, reals<2>, reals<mostElements>, reals<3>,
                                                       reals<mostElements>, reals<mostElements>, one<u32>)
            .weighing(seldom),
        C<decltype(TORVIKwriteFTsensorCalArrayA)>::make("TORVIKwriteFTsensorCalArrayA", allElements, number, text<9>,
                                                        reals<2>, reals<mostElements>, reals<3>, reals<mostElements>,
                                                        reals<mostElements>, number)
            .weighing(seldom),
        C<decltype(TORVIKwriteFTsensorCalArrExt)>::make("TORVIKwriteFTsensorCalArrExt", 60, number, reals<36>, factors,
                                                        factors, text<20>)
            .weighing(seldom),
        C<decltype(TORVIKreadFTsensorCalArrExt)>::make("TORVIKreadFTsensorCalArrExt", 60, one<u32>, reals<36>, factors,
                                                       factors, many<char, 16>)
            .weighing(seldom),
        C<decltype(TORVIKwriteFTsensorCalArrInfo)>::make("TORVIKwriteFTsensorCalArrInfo", 13, many<std::int32_t, 6>,
                                                         many<std::int32_t, 3>, reals<2>)
            .weighing(seldom),
        C<decltype(TORVIKstoreFTSensorCal)>::make("TORVIKstoreFTSensorCal", 1, byte),
        C<decltype(TORVIKgetFTSensorCalArrNo)>::make("TORVIKgetFTSensorCalArrNo", 1, number, many<std::uint8_t, 3>),
        C<decltype(TORVIKsetFTSensorCalArrNo)>::make("TORVIKsetFTSensorCalArrNo", 1, byte),
        C<decltype(TORVIKwriteFTSensorCalFromFile)>::make("TORVIKwriteFTSensorCalFromFile", 200, number,
                                                          calibrationFile)
            .weighing(2),
    };
}

}  // namespace torvik::proof
