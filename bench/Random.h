// Numbers that look random and are the same in every run, on every machine.
#pragma once

#include <cstdint>

namespace paperline::bench {

class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    uint64_t bits() {
        state_ += 0x9E3779B97F4A7C15U;
        uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }
    // 0 to limit - 1.
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>((bits() >> 32) * limit >> 32); }
    // 0 up to 1.
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }

private:
    uint64_t state_;
};

} // namespace paperline::bench
