#include "twain/BrandFilter.h"

namespace paperline {

bool passesBrandFilter(const TWAIN_INFO& source, const BrandWords& words) {
    const std::string tested =
        words.testsProductFamily ? source.productFamilyText() : source.manufacturerText();
    for (const std::string& word : {words.brandWord, words.secondBrandWord, words.makerWord}) {
        if (!word.empty() && tested.find(word) != std::string::npos)
            return true;
    }
    return false;
}

} // namespace paperline
