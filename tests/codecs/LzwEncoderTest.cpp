#include "codecs/tiff/LzwEncoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes encoded(const Bytes& bytes) {
    const auto encoder = std::make_unique<LzwEncoder>();
    const auto stream = encoder->encode(bytes);
    return {stream.begin(), stream.end()};
}

// Reads a stream as the format describes it, without a look at how it was written.
class Reader {
public:
    explicit Reader(const Bytes& stream) : stream_(stream) {}

    Bytes read() {
        EXPECT_EQ(nextCode(), 256U);
        clear();
        while (true) {
            const uint32_t code = nextCode();
            if (code == 257)
                break;
            if (code == 256) {
                clear();
                continue;
            }
            if (!take(code))
                break;
        }
        EXPECT_LT(stream_.size() * 8 - position_, 8U) << "bytes behind the end code";
        return result_;
    }
    size_t clears = 0;

private:
    uint32_t nextCode() {
        uint32_t code = 0;
        for (unsigned bit = 0; bit < width_; ++bit, ++position_) {
            if (position_ >= stream_.size() * 8) {
                ADD_FAILURE() << "the stream has no end code";
                return 257;
            }
            const uint32_t byte = stream_[position_ / 8];
            code = code << 1U | (byte >> (7 - position_ % 8) & 1U);
        }
        return code;
    }

    void clear() {
        ++clears;
        table_.assign(258, {});
        for (unsigned byte = 0; byte < 256; ++byte)
            table_[byte] = {static_cast<uint8_t>(byte)};
        width_ = 9;
        before_.clear();
    }

    bool take(uint32_t code) {
        if (code > table_.size() || (code == table_.size() && before_.empty())) {
            ADD_FAILURE() << "code " << code << " of " << table_.size();
            return false;
        }
        Bytes string = code < table_.size() ? table_[code] : before_;
        if (code == table_.size())
            string.push_back(before_[0]);
        if (!before_.empty()) {
            before_.push_back(string[0]);
            table_.push_back(before_);
        }
        // One code early: the writer's table is an entry ahead.
        while (width_ < 12 && table_.size() + 1 >= size_t{1} << width_)
            ++width_;
        EXPECT_LE(table_.size(), 4095U);
        result_.insert(result_.end(), string.begin(), string.end());
        before_ = std::move(string);
        return true;
    }

    const Bytes& stream_;
    std::vector<Bytes> table_;
    Bytes before_, result_;
    size_t position_ = 0;
    unsigned width_ = 9;
};

Bytes noise(size_t count, unsigned values) {
    std::minstd_rand random(7);
    Bytes bytes(count);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(random() / 7 % values);
    return bytes;
}

TEST(LzwEncoder, OneByte) {
    // 100000000 000000111 100000001, padded
    EXPECT_EQ(encoded({7}), (Bytes{0x80, 0x01, 0xE0, 0x20}));
}

// The example of the format's description: 7 7 7 8 8 7 7 6 6 becomes
// clear 7 258 8 8 258 6 6 end.
TEST(LzwEncoder, RepeatedStrings) {
    const Bytes stream = encoded({7, 7, 7, 8, 8, 7, 7, 6, 6});
    // 100000000 000000111 100000010 000001000 000001000 100000010 000000110 000000110 100000001
    EXPECT_EQ(stream, (Bytes{0x80, 0x01, 0xE0, 0x40, 0x80, 0x44, 0x08, 0x0C, 0x06, 0x80, 0x80}));
}

TEST(LzwEncoder, EveryLengthComesBack) {
    const auto encoder = std::make_unique<LzwEncoder>();
    const Bytes bytes = noise(9000, 256); // each byte a code: over every change of the width
    for (size_t count = 1; count <= bytes.size();
         count += count < 300 || (count > 3800 && count < 3900) ? 1 : 37) {
        const Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        const auto stream = encoder->encode(part);
        const Bytes copy(stream.begin(), stream.end());
        ASSERT_TRUE(Reader(copy).read() == part) << count;
    }
}

TEST(LzwEncoder, LongStripsComeBack) {
    for (const unsigned values : {1U, 2U, 5U, 40U, 256U}) {
        const Bytes bytes = noise(300'000, values);
        const Bytes stream = encoded(bytes);
        Reader reader(stream);
        EXPECT_TRUE(reader.read() == bytes) << values;
        EXPECT_EQ(reader.clears > 1, values > 1) << values;
    }
}

TEST(LzwEncoder, LosesLittleToStringsThatShareAPlace) {
    // The entropy of five equally likely values is 2.32 bits.
    EXPECT_LT(encoded(noise(300'000, 5)).size(), 300'000U * 3 / 8);
    EXPECT_LT(encoded(Bytes(300'000, 255)).size(), 2'000U);
}

} // namespace
} // namespace paperline
