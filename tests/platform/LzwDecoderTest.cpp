#include "platform/LzwDecoder.h"
#include "platform/LzwEncoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

class Lzw : public testing::Test {
protected:
    Bytes encoded(const Bytes& bytes) {
        const auto stream = encoder_->encode(bytes);
        return {stream.begin(), stream.end()};
    }
    bool decodes(const Bytes& stream, Bytes& target) { return decoder_->decode(stream, target); }
    bool comesBack(const Bytes& bytes) {
        Bytes target(bytes.size());
        return decodes(encoded(bytes), target) && target == bytes;
    }
    static Bytes noise(size_t count, unsigned values) {
        std::minstd_rand random(11);
        Bytes bytes(count);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random() / 7 % values);
        return bytes;
    }

    std::unique_ptr<LzwEncoder> encoder_ = std::make_unique<LzwEncoder>();
    std::unique_ptr<LzwDecoder> decoder_ = std::make_unique<LzwDecoder>();
};

// clear 7 258 8 8 258 6 6 end, where 258 is 7 7 before it is known
TEST_F(Lzw, ReadsRepeatedStrings) {
    const Bytes stream{0x80, 0x01, 0xE0, 0x40, 0x80, 0x44, 0x08, 0x0C, 0x06, 0x80, 0x80};
    Bytes target(9);
    ASSERT_TRUE(decodes(stream, target));
    EXPECT_EQ(target, (Bytes{7, 7, 7, 8, 8, 7, 7, 6, 6}));
    target.resize(4); // the rest is left
    ASSERT_TRUE(decodes(stream, target));
    EXPECT_EQ(target, (Bytes{7, 7, 7, 8}));
    target.resize(10);
    EXPECT_FALSE(decodes(stream, target));
}

TEST_F(Lzw, EveryLengthComesBack) {
    const Bytes bytes = noise(9000, 256);
    for (size_t count = 1; count <= bytes.size();
         count += count < 300 || (count > 3800 && count < 3900) ? 1 : 37)
        ASSERT_TRUE(comesBack({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)}))
            << count;
}

TEST_F(Lzw, LongStripsComeBack) {
    for (const unsigned values : {1U, 2U, 5U, 40U, 256U})
        EXPECT_TRUE(comesBack(noise(300'000, values))) << values;
}

TEST_F(Lzw, RefusesStreamsOfOtherKinds) {
    Bytes target(4);
    EXPECT_FALSE(decodes({}, target));
    EXPECT_FALSE(decodes({0x00, 0x01, 0x02, 0x03}, target));                   // no clear code
    EXPECT_FALSE(decodes({0x80, 0x60, 0x80, 0x80, 0x80}, target));             // 385 is not known
    EXPECT_FALSE(decodes({0x80, 0x01, 0xE0, 0x60, 0x00, 0x00, 0x00}, target)); // nor is 259
}

// Codes for ever without a clear code: the table has an end.
TEST_F(Lzw, RefusesMoreCodesThanThereAre) {
    Bytes stream{0x80, 0x00};
    stream.resize(40'000, 0);
    Bytes target(10'000);
    EXPECT_FALSE(decodes(stream, target));
}

TEST_F(Lzw, DamageStaysWithinTheTarget) {
    const Bytes whole = encoded(noise(20'000, 9));
    std::minstd_rand random(3);
    for (int turn = 0; turn < 2'000; ++turn) {
        Bytes stream = whole;
        for (int change = 0; change < 3; ++change)
            stream[random() % stream.size()] = static_cast<uint8_t>(random() / 5);
        stream.resize(stream.size() - random() % 100);
        Bytes target(19'000 + random() % 2'000);
        (void)decodes(stream, target); // the sanitizers look on
    }
}

} // namespace
} // namespace paperline
