// One data source as its bundle's entry sees it.
#pragma once

#include "twain/records/StandardRecords.h"

#include <cstdint>

namespace paperline::sources {

struct Triplet {
    uint32_t dataGroup = 0;
    uint16_t dataArgumentType = 0;
    uint16_t message = 0;
};

class TripletHandler {
public:
    virtual ~TripletHandler() = default;
    // Answers one triplet with a TWRC_ code. Called on the application's thread; may be entered
    // again from inside the notification that a page is ready.
    virtual uint16_t entry(twain::abi::Identity* origin, const Triplet& triplet, void* data) = 0;
};

} // namespace paperline::sources
