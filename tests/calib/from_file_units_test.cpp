// The units of a calibration file: those of the table, and the two texts that a device keeps.
#include "calib/from_file_bench.h"

namespace torvik::test {
namespace {

class FromFileUnits : public FromFileBench {
  protected:
    void SetUp() override {
        FromFileBench::SetUp();
        folder.write("matrix.txt", matrixText(6, 6));
    }

    static CalibrationText byOutput(std::initializer_list<const char*> texts) {
        CalibrationText text = fileOf({});
        int output = 0;
        for (const char* const unit : texts)
            text.set("SensorPara", "Unit_" + std::to_string(output++), unit);
        return text;
    }
    static CalibrationText byKind(const char* force, const char* torque) {
        return fileOf({}).set("SensorPara", "forceUnit", force).set("SensorPara", "torqueUnit", torque);
    }

    void deviceHas(std::uint32_t number, const char* text) {
        ASSERT_EQ(TORVIKsetUnitText(device, 1, static_cast<std::int32_t>(number), text), 0);
        takeSent();
    }

    // The frames of the loading with these for the units.
    void expectUnits(const Frames& units) {
        Frames expected;
        extension(expected, {}, newFirmware);
        for (const std::string& frame : units.all())
            expected.raw(frame);
        expectSent(arrays(expected, {}, newFirmware));
    }
    // The loading ends with these.
    void expectEndsWith(const Frames& units) {
        Frames expected;
        extension(expected, {}, newFirmware);
        for (const std::string& frame : units.all())
            expected.raw(frame);
        expectSent(expected);
    }

    static Frames& readTexts(Frames& frames) { return frames.raw("81 11 00").raw("81 11 01"); }
};

TEST_F(FromFileUnits, OfTheTableAreSentAsNumbers) {
    EXPECT_EQ(load(byOutput({"N", "kN", "mV/V", "Nm", "kWh"})), 0);
    Frames units;
    expectUnits(units.array(11, {3, 9, 0, 18, 46}));
}

TEST_F(FromFileUnits, AreComparedInAscii) {
    EXPECT_EQ(load(byOutput({"um/m", "m/s2", "0/00"})), 0);
    Frames units;
    expectUnits(units.array(11, {6, 42, 26}));
}

TEST_F(FromFileUnits, OfNoTableAreUserText1) {
    EXPECT_EQ(load(byOutput({"N", "lbs"})), 0);
    Frames units;
    units.element(11, 0, 3);
    expectUnits(readTexts(units)
                    .raw("86 12 00 01 6C 62 73 00")
                    .raw("86 12 00 02 00 00 00 00")
                    .raw("82 10 02 FF")
                    .element(11, 1, 255));
}

TEST_F(FromFileUnits, OfNoTableAreUserText2WhenThereIsAnother) {
    EXPECT_EQ(load(byOutput({"lbs", "inlbs", "lbs", "inlbs"})), 0);
    Frames units;
    expectUnits(readTexts(units)
                    .raw("86 12 00 01 6C 62 73 00")
                    .raw("86 12 00 02 00 00 00 00")
                    .raw("82 10 01 FF")
                    .element(11, 0, 255)
                    .raw("86 12 01 01 69 6E 6C 62")
                    .raw("86 12 01 02 73 00 00 00")
                    .raw("82 10 02 FE")
                    .element(11, 1, 254)
                    .element(11, 2, 255)
                    .element(11, 3, 254));
}

TEST_F(FromFileUnits, ThatTheDeviceHasAreNotWrittenAgain) {
    deviceHas(2, "lbs");
    EXPECT_EQ(load(byOutput({"lbs"})), 0);
    Frames units;
    expectUnits(readTexts(units).element(11, 0, 254));
}

TEST_F(FromFileUnits, DoNotReplaceATextOfTheDeviceThatIsInUse) {
    deviceHas(1, "lbs");
    EXPECT_EQ(load(byOutput({"lbs", "inlbs"})), 0);
    Frames units;
    expectUnits(readTexts(units)
                    .element(11, 0, 255)
                    .raw("86 12 01 01 69 6E 6C 62")
                    .raw("86 12 01 02 73 00 00 00")
                    .raw("82 10 02 FE")
                    .element(11, 1, 254));
}

TEST_F(FromFileUnits, OfForcesAndTorquesAreUserTextsToo) {
    deviceHas(1, "inlbs");
    EXPECT_EQ(load(byKind("N", "inlbs")), 0);
    Frames units;
    units.array(11, {3, 3, 3});
    expectUnits(readTexts(units).element(11, 3, 255).element(11, 4, 255).element(11, 5, 255));
}

TEST_F(FromFileUnits, OfForcesAloneLeaveTheTorques) {
    EXPECT_EQ(load(fileOf({}).set("SensorPara", "forceUnit", "kN")), 0);
    Frames units;
    expectUnits(units.array(11, {9, 9, 9}));
}

TEST_F(FromFileUnits, WithSevenCharactersInCommonAreOneOnTheDevice) {
    EXPECT_EQ(load(byOutput({"abcdefgh", "abcdefgi"})), 0);
    Frames units;
    expectUnits(readTexts(units)
                    .raw("86 12 00 01 61 62 63 64")
                    .raw("86 12 00 02 65 66 67 00")
                    .raw("82 10 01 FF")
                    .element(11, 0, 255)
                    .element(11, 1, 255));
}

TEST_F(FromFileUnits, EndTheLoadingAtAThirdTextOfNoTable) {
    deviceHas(1, "one");
    deviceHas(2, "two");
    EXPECT_EQ(load(byOutput({"one", "two", "three"})), -1);
    EXPECT_EQ(takeCode(), contentError);
    Frames units;
    expectEndsWith(readTexts(units).element(11, 0, 255).element(11, 1, 254));
}

TEST_F(FromFileUnits, AreAtMostTenCharacters) {
    EXPECT_EQ(load(byOutput({"abcdefghij"})), 0);
    takeSent();
    EXPECT_EQ(load(byOutput({"abcdefghijk"})), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    expectEndsWith(Frames());
}

TEST_F(FromFileUnits, EndTheLoadingWithATextThatCannotBeRead) {
    answerWith(0x11, {0x53});
    EXPECT_EQ(load(byOutput({"lbs"})), -1);
    EXPECT_EQ(takeCode(), 0x53U);
    Frames units;
    expectEndsWith(units.raw("81 11 00"));
    expectFree();
}

TEST_F(FromFileUnits, EndTheLoadingWithATextThatIsRefused) {
    answerWith(0x12, {0x53});
    EXPECT_EQ(load(byOutput({"lbs"})), -1);
    EXPECT_EQ(takeCode(), 0x53U);
    Frames units;
    expectEndsWith(readTexts(units).raw("86 12 00 01 6C 62 73 00"));
}

TEST_F(FromFileUnits, EndTheLoadingWithAUnitThatIsRefused) {
    answerWith(0x10, {0x53});
    EXPECT_EQ(load(byOutput({"lbs"})), -1);
    EXPECT_EQ(takeCode(), 0x53U);
    Frames units;
    expectEndsWith(readTexts(units).raw("86 12 00 01 6C 62 73 00").raw("86 12 00 02 00 00 00 00").raw("82 10 01 FF"));
}

}  // namespace
}  // namespace torvik::test
