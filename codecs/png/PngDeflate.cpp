#include "codecs/png/PngDeflate.h"

#include "codecs/png/HuffmanCode.h"
#include "platform/files/ByteOrder.h"

#include <algorithm>
#include <array>

namespace paperline {
namespace {

constexpr size_t endOfBlock = 256;
constexpr size_t symbolCount = 286;
constexpr size_t shortestMatch = 3;
constexpr size_t longestMatch = 258;
// Four codes fit into the 56 bits that BitWriter takes between flushes.
constexpr unsigned longestCode = 12;

using Frequencies = std::array<uint32_t, symbolCount>;

// A match length as deflate codes it.
struct MatchLength {
    uint16_t symbol = 0;
    uint8_t extraBits = 0;
    uint8_t extra = 0;
};

std::array<MatchLength, longestMatch + 1> matchLengthTable() {
    std::array<MatchLength, longestMatch + 1> table{};
    size_t length = shortestMatch;
    for (unsigned symbol = 257; symbol < 285; ++symbol) {
        const unsigned extraBits = symbol < 265 ? 0 : (symbol - 261) / 4;
        for (unsigned extra = 0; extra < (1U << extraBits); ++extra)
            table.at(length++) = {static_cast<uint16_t>(symbol),
                                  static_cast<uint8_t>(extraBits),
                                  static_cast<uint8_t>(extra)};
        length = std::min(length, longestMatch);
    }
    table[longestMatch] = {285, 0, 0};
    return table;
}

const MatchLength& matchLength(size_t length) {
    static const std::array<MatchLength, longestMatch + 1> table = matchLengthTable();
    return table[length];
}

bool isZero(std::span<const uint8_t> eightBytes) {
    return readInteger<uint64_t>(eightBytes, std::endian::native) == 0;
}

// Splits the bytes into runs for `visitor`: literals(bytes), and zeros(count) of at least 8.
template <typename Visitor> void walk(std::span<const uint8_t> bytes, Visitor& visitor) {
    size_t start = 0;
    size_t at = 0;
    while (at + 8 <= bytes.size()) {
        if (!isZero(bytes.subspan(at))) {
            at += 8;
            continue;
        }
        visitor.literals(bytes.subspan(start, at - start));
        start = at;
        while (at + 8 <= bytes.size() && isZero(bytes.subspan(at)))
            at += 8;
        while (at < bytes.size() && bytes[at] == 0)
            ++at;
        visitor.zeros(at - start);
        start = at;
    }
    visitor.literals(bytes.subspan(start));
}

// A run of zeros is a literal, matches of distance 1, and literals for a rest too short for a
// match: calls literal() and match(length).
template <typename Literal, typename Match>
void splitZeros(size_t count, const Literal& literal, const Match& match) {
    literal();
    for (--count; count >= shortestMatch;) {
        const size_t length = std::min(count, longestMatch);
        match(length);
        count -= length;
    }
    for (; count > 0; --count)
        literal();
}

class Counter {
public:
    void literals(std::span<const uint8_t> bytes) {
        // Four tables: equal neighbours in one table would wait for each other's increment.
        size_t x = 0;
        for (; x + 4 <= bytes.size(); x += 4) {
            ++tables_[0][bytes[x]];
            ++tables_[1][bytes[x + 1]];
            ++tables_[2][bytes[x + 2]];
            ++tables_[3][bytes[x + 3]];
        }
        for (; x < bytes.size(); ++x)
            ++tables_[0][bytes[x]];
    }
    void zeros(size_t count) {
        splitZeros(
            count,
            [this] { ++tables_[0][0]; },
            [this](size_t length) {
                const MatchLength& match = matchLength(length);
                ++tables_[0][match.symbol];
                extraBits_ += match.extraBits + 1U; // one bit for the distance
            });
    }

    Frequencies frequencies() const {
        Frequencies sum{};
        for (const Frequencies& table : tables_)
            for (size_t symbol = 0; symbol < symbolCount; ++symbol)
                sum[symbol] += table[symbol];
        sum[endOfBlock] = 1;
        return sum;
    }
    uint64_t extraBits() const { return extraBits_; }

private:
    std::array<Frequencies, 4> tables_{};
    uint64_t extraBits_ = 0;
};

// Writes bits, lowest first. Also overwrites up to seven bytes after the last one.
class BitWriter {
public:
    explicit BitWriter(uint8_t* target) : target_(target) {}

    // At most 56 bits between flushes.
    void add(uint64_t bits, unsigned count) {
        pending_ |= bits << pendingCount_;
        pendingCount_ += count;
    }
    void flush() {
        writeInteger(std::span(target_, sizeof pending_), std::endian::little, pending_);
        target_ += pendingCount_ / 8;
        pending_ >>= pendingCount_ & ~7U;
        pendingCount_ &= 7U;
    }
    void put(uint64_t bits, unsigned count) {
        add(bits, count);
        flush();
    }
    void toWholeByte() { put(0, (8 - pendingCount_ % 8) % 8); }
    uint8_t* end() const { return target_; }

private:
    uint8_t* target_;
    uint64_t pending_ = 0;
    unsigned pendingCount_ = 0;
};

using Codes = std::array<HuffmanCode, symbolCount>;

class Emitter {
public:
    Emitter(BitWriter& writer, const Codes& codes) : writer_(writer), codes_(codes) {}

    void literals(std::span<const uint8_t> bytes) {
        BitWriter writer = writer_; // a local copy is kept in registers
        size_t x = 0;
        for (; x + 4 <= bytes.size(); x += 4) {
            add(writer, bytes[x]);
            add(writer, bytes[x + 1]);
            add(writer, bytes[x + 2]);
            add(writer, bytes[x + 3]);
            writer.flush();
        }
        for (; x < bytes.size(); ++x) {
            add(writer, bytes[x]);
            writer.flush();
        }
        writer_ = writer;
    }
    void zeros(size_t count) {
        splitZeros(
            count,
            [this] {
                add(writer_, 0);
                writer_.flush();
            },
            [this](size_t length) {
                const MatchLength& match = matchLength(length);
                add(writer_, match.symbol);
                writer_.add(match.extra, match.extraBits);
                writer_.put(0, 1); // distance 1
            });
    }
    void end() {
        add(writer_, endOfBlock);
        writer_.flush();
    }

private:
    void add(BitWriter& writer, size_t symbol) const {
        writer.add(codes_[symbol].bits, codes_[symbol].length);
    }

    BitWriter& writer_;
    const Codes& codes_;
};

constexpr unsigned lengthBits = 4; // of each code length in the header
constexpr uint64_t headerBits = 3 + 5 + 5 + 4 + 19 * 3 + (symbolCount + 1) * lengthBits;

// Code lengths are Huffman coded themselves, and the lengths of those codes come first, in the
// standard's order: 4 bits for each of 0 to 15, none for the symbols of repeated lengths.
void putHeader(BitWriter& writer, const Codes& codes, bool isLast) {
    constexpr unsigned dynamicCodes = 2;
    writer.put((isLast ? 1U : 0U) | dynamicCodes << 1U, 3);
    writer.put(symbolCount - 257, 5);
    writer.put(0, 5); // one distance
    writer.put(19 - 4, 4);
    for (const unsigned lengthSymbol :
         {16U, 17U, 18U, 0U, 8U, 7U, 9U, 6U, 10U, 5U, 11U, 4U, 12U, 3U, 13U, 2U, 14U, 1U, 15U})
        writer.put(lengthSymbol < 16 ? lengthBits : 0, 3);
    const auto putLength = [&writer](unsigned length) {
        writer.put(reversedBits(length, lengthBits), lengthBits);
    };
    for (const HuffmanCode& code : codes)
        putLength(code.length);
    putLength(1); // the distance's
}

uint64_t codedBits(const Counter& counter, const Frequencies& frequencies, const Codes& codes) {
    uint64_t bits = headerBits + counter.extraBits();
    for (size_t symbol = 0; symbol < symbolCount; ++symbol)
        bits += uint64_t{frequencies[symbol]} * codes[symbol].length;
    return bits;
}

} // namespace

std::vector<uint8_t> deflateBlock(std::span<const uint8_t> bytes, DeflatePlace place) {
    Counter counter;
    walk(bytes, counter);
    const Frequencies frequencies = counter.frequencies();
    Codes codes;
    assignHuffmanCodes(frequencies, longestCode, codes);

    constexpr size_t emptyStoredBlock = 5;
    constexpr size_t writersSlack = 8; // BitWriter writes beyond its last byte
    std::vector<uint8_t> result(codedBits(counter, frequencies, codes) / 8 + 1 + emptyStoredBlock +
                                writersSlack);
    BitWriter writer(result.data());
    putHeader(writer, codes, place == DeflatePlace::last);
    Emitter emitter(writer, codes);
    walk(bytes, emitter);
    emitter.end();
    if (place == DeflatePlace::within) {
        writer.put(0, 3); // a stored block, not the last one
        writer.toWholeByte();
        writer.put(0xFFFF0000U, 32); // of no bytes
    }
    writer.toWholeByte();
    result.resize(static_cast<size_t>(writer.end() - result.data()));
    return result;
}

} // namespace paperline
