#include "output/ProducerPatch.h"

#include <algorithm>
#include <string_view>

namespace paperline {

namespace {

constexpr std::string_view producerKey = "Producer";
constexpr size_t referenceBytes = 9;

std::optional<size_t> findBytes(std::span<const uint8_t> bytes, std::string_view wanted) {
    const auto found = std::search(
        bytes.begin(), bytes.end(), wanted.begin(), wanted.end(), [](uint8_t byte, char letter) {
            return byte == static_cast<uint8_t>(letter);
        });
    if (found == bytes.end())
        return std::nullopt;
    return static_cast<size_t>(found - bytes.begin());
}

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

ProducerPlace findProducer(std::span<const uint8_t> pdf) {
    ProducerPlace place;
    place.key = findBytes(pdf, producerKey);
    if (!place.key)
        return place;
    const size_t value = std::min(*place.key + referenceBytes, pdf.size());
    const auto bytes = pdf.subspan(value, std::min(referenceBytes, pdf.size() - value));
    place.reference.assign(bytes.begin(), bytes.end());
    const size_t blank = std::min(place.reference.find(' '), referenceBytes);
    place.object = findBytes(pdf, place.reference.substr(0, blank + 1) + "0 obj\n");
    if (place.object)
        place.text = *place.object + blank + 8;
    return place;
}

void patchProducer(std::span<uint8_t> pdf, size_t text, const std::string& model) {
    const size_t end = std::min(text + producerPatchBytes, pdf.size());
    size_t position = text;
    for (size_t i = 0; i < model.size() && position < end; ++i, ++position)
        pdf[position] = static_cast<uint8_t>(model[i]);
    for (; position < end && pdf[position] != ')'; ++position)
        pdf[position] = 0;
}

} // namespace paperline
