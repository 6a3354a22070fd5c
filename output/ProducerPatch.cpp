#include "output/ProducerPatch.h"

#include <algorithm>
#include <string_view>

namespace paperline {

namespace {

constexpr std::string_view producerKey = "Producer";
constexpr size_t referenceBytes = 9;

} // namespace

MakeAndModel splitModelName(const std::string& modelName) {
    MakeAndModel result{modelName.substr(0, modelName.find(' ')) + " ", {}};
    size_t start = 0;
    for (size_t found = modelName.find(result.make); found != std::string::npos;
         found = modelName.find(result.make, start)) {
        result.model.append(modelName, start, found - start);
        start = found + result.make.size();
    }
    result.model.append(modelName, start);
    return result;
}

ProducerPlace findProducer(const FileToPatch& pdf) {
    ProducerPlace place;
    place.key = pdf.find(producerKey);
    if (!place.key)
        return place;
    const std::vector<uint8_t> value = pdf.read(*place.key + referenceBytes, referenceBytes);
    place.reference.assign(value.begin(), value.end());
    const size_t blank = std::min(place.reference.find(' '), referenceBytes);
    place.object = pdf.find(place.reference.substr(0, blank + 1) + "0 obj\n");
    if (place.object)
        place.text = *place.object + blank + 8;
    return place;
}

void patchProducer(std::span<uint8_t> text, const std::string& model) {
    const size_t end = std::min(producerPatchBytes, text.size());
    size_t position = std::min(model.size(), end);
    std::copy_n(model.begin(), position, text.begin());
    for (; position < end && text[position] != ')'; ++position)
        text[position] = 0;
}

} // namespace paperline
