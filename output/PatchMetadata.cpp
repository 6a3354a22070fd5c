// Puts the scanner's maker and model into files that are already written, for the brands that ask
// for it.
#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/PageCodecs.h"
#include "output/ProducerPatch.h"
#include "platform/files/FilePieces.h"
#include "platform/process/SystemLog.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace paperline {

namespace {

// As the platform prints a zero-terminated text.
std::string upToZero(std::span<const uint8_t> bytes) {
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), uint8_t{0})};
}

FileToPatch piecesOf(const FilePieces& file) {
    return {.find = [&file](std::string_view bytes) { return file.find(bytes); },
            .read =
                [&file](uint64_t position, size_t count) {
                    std::vector<uint8_t> bytes(count);
                    bytes.resize(file.read(position, bytes));
                    return bytes;
                }};
}

void logPosition(std::optional<uint64_t> position) {
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
    const FilePieces file(path);
    if (!file.isOpen())
        return;
    const FileToPatch pdf = piecesOf(file);
    const ProducerPlace place = findProducer(pdf);
    logPosition(place.key);
    if (!place.key)
        return;
    systemLog("fileByte = " + place.reference);
    logPosition(place.object);
    if (!place.object)
        return;
    std::vector<uint8_t> text = pdf.read(place.text, producerPatchBytes + 1);
    systemLog("fileByte2 = " + upToZero(text));
    patchProducer(text, splitModelName(modelName).model);
    (void)replaceBytes(path, place.text, text);
}

} // namespace paperline
