// Puts the scanner's maker and model into files that are already written, for the brands that ask
// for it.
#include "app/AppDelegate.h"
#include "app/BrandProfile.h"
#include "app/CvOutputLog.h"
#include "output/PageCodecs.h"
#include "output/ProducerPatch.h"
#include "platform/Files.h"
#include "platform/SystemLog.h"

#include <algorithm>
#include <optional>

namespace paperline {

namespace {

// As the platform prints a zero-terminated text.
std::string upToZero(std::span<const uint8_t> bytes) {
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), uint8_t{0})};
}

void logPosition(std::optional<size_t> position) {
    systemLog(position ? "Bytes found at position " + std::to_string(*position)
                       : std::string("Bytes not found"));
}

} // namespace

void AppDelegate::replaceExifInfo(const std::string& path, const std::string& modelName) {
    TraceScope trace("replaceExifInfo");
    if (!brandProfile(gBrandNumber).patchesMetadata)
        return;
    const MakeAndModel names = splitModelName(modelName);
    if (pageCodecs().setMakeAndModel)
        (void)pageCodecs().setMakeAndModel(path, names.make, names.model);
}

void AppDelegate::replacePDFProducer(const std::string& path, const std::string& modelName) {
    TraceScope trace("replacePDFProducer");
    if (!brandProfile(gBrandNumber).patchesMetadata)
        return;
    std::optional<std::vector<uint8_t>> pdf = readFile(path);
    if (!pdf)
        return;
    const ProducerPlace place = findProducer(*pdf);
    logPosition(place.key);
    if (!place.key)
        return;
    systemLog("fileByte = " + place.reference);
    logPosition(place.object);
    if (!place.object)
        return;
    const size_t start = std::min(place.text, pdf->size());
    const size_t length = std::min(producerPatchBytes + 1, pdf->size() - start);
    systemLog("fileByte2 = " + upToZero(std::span(*pdf).subspan(start, length)));
    patchProducer(*pdf, place.text, splitModelName(modelName).model);
    (void)writeFileAtomically(path, *pdf);
}

} // namespace paperline
