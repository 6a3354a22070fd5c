// Which data sources a brand offers.
#pragma once

#include "controller/TwainInfo.h"

#include <string>

namespace paperline {

struct BrandWords {
    std::string brandWord;
    std::string secondBrandWord;     // empty: none
    std::string makerWord;           // every brand keeps sources that hold it
    bool testsProductFamily = false; // the product family is looked at instead of the manufacturer
};

// True when the source's manufacturer (or product family) contains one of the words, case as
// written.
bool passesBrandFilter(const TWAIN_INFO& source, const BrandWords& words);

} // namespace paperline
