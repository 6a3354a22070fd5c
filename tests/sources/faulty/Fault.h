// The faulty scanner's option `fault`: how it is to misbehave.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

// NAME[@PAGE][:VALUE], PAGE a number from 1, "first", "middle" or "last". Page 0 is the opening of
// the device.
struct Fault {
    enum class Place { everyPage, number, middle, last };
    std::string name;
    Place place = Place::everyPage;
    int page = 0; // of Place::number
    std::optional<int64_t> value;

    // Pages count from 1; pageCount is how many the batch has.
    bool strikes(int pageNumber, int pageCount) const;
};

class FaultList {
public:
    // Comma separated; blanks around them are left out. Nothing when one has an unknown name or
    // is written wrongly.
    [[nodiscard]] static std::optional<FaultList> parse(std::string_view text);

    // The fault of this name that strikes on this page, null when there is none.
    const Fault* find(std::string_view name, int pageNumber, int pageCount) const;
    // The same whatever the page.
    const Fault* find(std::string_view name) const;

private:
    std::vector<Fault> faults_;
};

// Triplets whose faults are `<triplet>-fail`, `<triplet>-cancel` and `<triplet>-hang`.
std::span<const std::string_view> faultyTriplets();
// Every other fault of the data source, then those of the device behind it.
std::span<const std::string_view> sourceFaults();
std::span<const std::string_view> deviceFaults();

} // namespace paperline::sources
