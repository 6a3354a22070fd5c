#include "codecs/png/HuffmanCode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace paperline {
namespace {

constexpr unsigned mostBits = 15;
using LengthCounts = std::array<size_t, mostBits + 1>;

struct Node {
    uint64_t weight = 0;
    size_t parent = 0;
};

// The tree's nodes, leaves first. Leaves come sorted by weight and joined nodes are made in the
// order of their weights, so the lightest node is always at the front of one of these two queues.
std::vector<Node> huffmanTree(std::vector<Node> nodes) {
    const size_t leaves = nodes.size();
    size_t leaf = 0;
    size_t joined = leaves;
    const auto takeLightest = [&] {
        const bool fromLeaves =
            leaf < leaves && (joined == nodes.size() || nodes[leaf].weight <= nodes[joined].weight);
        return fromLeaves ? leaf++ : joined++;
    };
    for (size_t join = 1; join < leaves; ++join) {
        const size_t first = takeLightest();
        const size_t second = takeLightest();
        nodes[first].parent = nodes[second].parent = nodes.size();
        nodes.push_back({nodes[first].weight + nodes[second].weight, 0});
    }
    return nodes;
}

// The number of leaves at each depth; those deeper than `longest` count as `longest`.
LengthCounts countDepths(const std::vector<Node>& tree, size_t leaves, unsigned longest) {
    std::vector<unsigned> depths(tree.size());
    LengthCounts counts{};
    for (size_t node = tree.size() - 1; node-- > 0;) {
        depths[node] = depths[tree[node].parent] + 1;
        if (node < leaves)
            ++counts[std::min(depths[node], longest)];
    }
    return counts;
}

// Cut depths ask for more codes than exist. Each step lengthens a shorter code by a bit, which
// makes room for one of the longest codes beside it.
void makeRoom(LengthCounts& counts, unsigned longest) {
    size_t taken = 0;
    for (unsigned length = 1; length <= longest; ++length)
        taken += counts[length] << (longest - length);
    for (; taken > (size_t{1} << longest); --taken) {
        unsigned shorter = longest - 1;
        while (counts[shorter] == 0)
            --shorter;
        --counts[shorter];
        counts[shorter + 1] += 2;
        --counts[longest];
    }
}

// The symbols that occur, rarest first; equal ones in ascending order.
std::vector<size_t> sortedSymbols(std::span<const uint32_t> frequencies) {
    std::vector<size_t> symbols;
    for (size_t symbol = 0; symbol < frequencies.size(); ++symbol)
        if (frequencies[symbol] > 0)
            symbols.push_back(symbol);
    std::stable_sort(symbols.begin(), symbols.end(), [&](size_t left, size_t right) {
        return frequencies[left] < frequencies[right];
    });
    return symbols;
}

LengthCounts lengthCounts(std::span<const uint32_t> frequencies,
                          const std::vector<size_t>& symbols,
                          unsigned longest) {
    if (symbols.size() < 2) {
        LengthCounts counts{};
        counts[1] = symbols.size();
        return counts;
    }
    std::vector<Node> leaves;
    leaves.reserve(2 * symbols.size());
    for (const size_t symbol : symbols)
        leaves.push_back({frequencies[symbol], 0});
    LengthCounts counts = countDepths(huffmanTree(std::move(leaves)), symbols.size(), longest);
    makeRoom(counts, longest);
    return counts;
}

} // namespace

unsigned reversedBits(unsigned bits, unsigned count) {
    unsigned result = 0;
    for (unsigned bit = 0; bit < count; ++bit)
        result |= ((bits >> bit) & 1U) << (count - 1 - bit);
    return result;
}

void assignHuffmanCodes(std::span<const uint32_t> frequencies,
                        unsigned longest,
                        std::span<HuffmanCode> codes) {
    const std::vector<size_t> symbols = sortedSymbols(frequencies);
    const LengthCounts counts = lengthCounts(frequencies, symbols, longest);
    std::fill(codes.begin(), codes.end(), HuffmanCode{});
    size_t rarest = 0;
    for (unsigned length = longest; length > 0; --length)
        for (size_t code = 0; code < counts[length]; ++code)
            codes[symbols[rarest++]].length = static_cast<uint16_t>(length);

    // Canonical codes: shorter ones first, equal lengths in the order of symbols.
    unsigned next = 0;
    for (unsigned length = 1; length <= longest; ++length) {
        for (HuffmanCode& code : codes)
            if (code.length == length)
                code.bits = static_cast<uint16_t>(reversedBits(next++, length));
        next <<= 1U;
    }
}

} // namespace paperline
