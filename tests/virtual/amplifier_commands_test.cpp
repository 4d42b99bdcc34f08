#include "answers.hpp"
#include "open_adapter.hpp"

namespace virtual_test {
namespace {

using AmplifierCommands = QuietAdapter;

TEST_F(AmplifierCommands, FirmwareVersionIsTold) {
    EXPECT_EQ(ask({0x2B}), (Data{0x44, 0x00, 0x00, 0x04, 0x00, 0x00}));
}

TEST_F(AmplifierCommands, InterfaceIdentHasFourEntries) {
    EXPECT_EQ(ask({0x01, 0}), (Data{0x44, 0x00, 0x00, 0x01, 0x00, 0x00}));
    EXPECT_EQ(ask({0x01, 1}), (Data{0x44, 0x00, 0x00, 0x00, 0x00, 0x01}));
    EXPECT_EQ(ask({0x01, 2}), (Data{0x44, 0x00, 0x00, 0x0F, 0x42, 0x40}));
    EXPECT_EQ(ask({0x01, 3}), (Data{0x44, 0x00, 0x00, 0x00, 0x00, 0x00}));
    EXPECT_EQ(ask({0x01, 4}), refusal(0x51));
}

TEST_F(AmplifierCommands, ChannelCountIsToldByModeWordAndMapping) {
    EXPECT_EQ(ask({0x26}), (Data{0x44, 0x00, 0x00, 0x00, 0x00, 0x06}));
    EXPECT_EQ(ask({0x49, 0}), (Data{0x42, 0x00, 0x00, 0x06}));
    EXPECT_EQ(ask({0x49, 17}), refusal(0x51));
}

TEST_F(AmplifierCommands, IdentifiersAreTold) {
    EXPECT_EQ(ask({0x8C, 0}), (Data{0x44, 0x00, 0x00, 0x00, 0x01, 0x00}));
    EXPECT_EQ(ask({0x8C, 1}), (Data{0x44, 0x00, 0x00, 0x00, 0x01, 0x01}));
    EXPECT_EQ(ask({0x8C, 2}), (Data{0x44, 0x00, 0x00, 0x00, 0x01, 0x02}));
    EXPECT_EQ(ask({0x8C, 8}), refusal(0x51));
}

TEST_F(AmplifierCommands, TransmitModeFollowsTheStream) {
    EXPECT_EQ(ask({0x80, 0}), (Data{0x42, 0x00, 0x00, 0x00}));
    EXPECT_EQ(ask({0x23}), kAcknowledged);
    EXPECT_EQ(ask({0x80, 0}), (Data{0x42, 0x00, 0x00, 0x01}));
    EXPECT_EQ(ask({0x24}), kAcknowledged);
    EXPECT_EQ(ask({0x80, 0}), (Data{0x42, 0x00, 0x00, 0x00}));
    EXPECT_EQ(ask({0x80, 1}), (Data{0x42, 0x00, 0x00, 0x00}));
    EXPECT_EQ(ask({0x80, 2}), refusal(0x51));
}

TEST_F(AmplifierCommands, RawValueIsTheNextSetsValueSignExtended) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nunit = 'counts'\nstreaming = false\nchannels = 2\n"
                               "[[amplifier.signal]]\noffset = -200\n[[amplifier.signal]]\noffset = 66051\n"),
              0)
        << virtualMessage();
    EXPECT_EQ(ask({0x3A, 1}), (Data{0x44, 0x00, 0xFF, 0xFF, 0xFF, 0x38}));
    EXPECT_EQ(ask({0x3A, 2}), (Data{0x44, 0x00, 0x00, 0x01, 0x02, 0x03}));
    EXPECT_EQ(ask({0x3A, 0}), refusal(0x51));
    EXPECT_EQ(ask({0x3A, 3}), refusal(0x51));
}

TEST_F(AmplifierCommands, OneSetComesWithoutAnAnswer) {
    CanMessage command = commandFrame({0x3B});
    ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
    const auto frames = drain();
    ASSERT_EQ(frames.size(), 6U);
    for (std::size_t channel = 0; channel < frames.size(); ++channel) {
        EXPECT_EQ(frames[channel].id, kValueId);
        EXPECT_EQ(frames[channel].data[0], channel);
    }
}

TEST_F(AmplifierCommands, BufferAndMaximaAreCleared) {
    EXPECT_EQ(ask({0x25}), kAcknowledged);
    EXPECT_EQ(ask({0x3C, 0}), kAcknowledged);
    EXPECT_EQ(ask({0x3C, 6}), kAcknowledged);
    EXPECT_EQ(ask({0x3C, 7}), refusal(0x51));
}

TEST_F(AmplifierCommands, UnknownCommandsAreRefused) {
    const std::initializer_list<std::uint8_t> known{0x00, 0x01, 0x23, 0x24, 0x25, 0x26, 0x2B, 0x3A,
                                                    0x3B, 0x3C, 0x42, 0x43, 0x49, 0x80, 0x8C};
    EXPECT_EQ(ask({0xFE}), refusal(0x40));
    EXPECT_EQ(ask({0xFF}), refusal(0x40));
    for (const std::uint8_t code : known)
        EXPECT_NE(ask({code}), refusal(0x40)) << int{code};
}

TEST_F(AmplifierCommands, WrongParameterNumbersAreRefused) {
    EXPECT_EQ(ask({0x2B, 0}), refusal(0x5B));
    EXPECT_EQ(ask({0x01}), refusal(0x5B));
    EXPECT_EQ(ask({0x8C, 2, 2}), refusal(0x5B));
    CanMessage headerDisagrees = commandFrame({0x8C, 2});
    headerDisagrees.data[0] = 0x82;
    ASSERT_EQ(CAN_Write(kUsb, &headerDisagrees), kOk);
    EXPECT_EQ(dataOf(readFrame().value()), refusal(0x5B));
}

TEST_F(AmplifierCommands, FramesThatAreNoCommandsAreNotAnswered) {
    CanMessage answerLike = commandFrame({0x2B});
    answerLike.data[0] = 0x40;
    CanMessage tooShort{kCommandId, 0, 1, {0x80}};
    CanMessage remote{kCommandId, 1, 2, {0x80, 0x2B}};
    for (CanMessage* const frame : {&answerLike, &tooShort, &remote})
        EXPECT_EQ(CAN_Write(kUsb, frame), kOk);
    EXPECT_EQ(virtualQueued(), 0U);
    EXPECT_EQ(counters().commandsReceived, 0U);
}

TEST_F(AmplifierCommands, RefusedCommandsAreKeptAsProtocolErrorsUntilTheStatusIsReset) {
    ask({0xFE});
    ask({0x2B, 0});
    EXPECT_EQ(ask({0x42, 0}), (Data{0x44, 0x00, 0x00, 0x00, 0x2B, 0x5B}));
    EXPECT_EQ(ask({0x42, 1}), (Data{0x44, 0x00, 0x00, 0x00, 0xFE, 0x40}));
    EXPECT_EQ(ask({0x42, 2}), (Data{0x44, 0x00, 0x00, 0x00, 0x00, 0x00}));
    EXPECT_EQ(ask({0x42, 8}), refusal(0x51));
    EXPECT_EQ(ask({0x00}), kAcknowledged);
    EXPECT_EQ(ask({0x42, 0}), (Data{0x44, 0x00, 0x00, 0x00, 0x00, 0x00}));
}

TEST_F(AmplifierCommands, ValuesCutToTheirRangeAreKeptAsValueErrors) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nvalue_type = 'int16'\nunit = 'counts'\nstreaming = false\n"
                               "channels = 2\n[[amplifier.signal]]\noffset = 7\n[[amplifier.signal]]\noffset = 1e6\n"),
              0)
        << virtualMessage();
    EXPECT_EQ(ask({0x43, 0}), (Data{0x46, 0x00, 0, 0, 0, 0, 0, 0}));
    ASSERT_EQ(virtualSendSets(0, 2), 4U);
    const auto frames = drain();
    EXPECT_EQ(dataOf(frames[1]), (Data{0x01, 0x11, 0, 0, 0x7F, 0xFF, 0, 0}));
    EXPECT_EQ(ask({0x43, 0}), (Data{0x46, 0x00, 2, 1, 0, 0, 0, 1}));
    EXPECT_EQ(ask({0x43, 1}), (Data{0x46, 0x00, 2, 1, 0, 0, 0, 0}));
    EXPECT_EQ(ask({0x43, 8}), refusal(0x51));
    EXPECT_EQ(ask({0x00}), kAcknowledged);
    EXPECT_EQ(ask({0x43, 0}), (Data{0x46, 0x00, 0, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace virtual_test
