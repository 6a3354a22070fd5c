#include "codecs/tiff/TiffPages.h"

#include <array>
#include <new>

namespace paperline {
namespace {

uint16_t numberOf(TIFF* tiff, uint32_t tag) {
    uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

// Tags by the type of their values in TIFFGetField.

constexpr std::array shortTags{uint32_t{TIFFTAG_BITSPERSAMPLE},
                               uint32_t{TIFFTAG_SAMPLESPERPIXEL},
                               uint32_t{TIFFTAG_PHOTOMETRIC},
                               uint32_t{TIFFTAG_FILLORDER},
                               uint32_t{TIFFTAG_ORIENTATION},
                               uint32_t{TIFFTAG_PLANARCONFIG},
                               uint32_t{TIFFTAG_RESOLUTIONUNIT},
                               uint32_t{TIFFTAG_SAMPLEFORMAT},
                               uint32_t{TIFFTAG_THRESHHOLDING},
                               uint32_t{TIFFTAG_INKSET},
                               uint32_t{TIFFTAG_YCBCRPOSITIONING},
                               uint32_t{TIFFTAG_PREDICTOR}};
constexpr std::array longTags{uint32_t{TIFFTAG_SUBFILETYPE},
                              uint32_t{TIFFTAG_IMAGEWIDTH},
                              uint32_t{TIFFTAG_IMAGELENGTH},
                              uint32_t{TIFFTAG_ROWSPERSTRIP},
                              uint32_t{TIFFTAG_TILEWIDTH},
                              uint32_t{TIFFTAG_TILELENGTH},
                              uint32_t{TIFFTAG_GROUP3OPTIONS},
                              uint32_t{TIFFTAG_GROUP4OPTIONS}};
constexpr std::array floatTags{uint32_t{TIFFTAG_XRESOLUTION},
                               uint32_t{TIFFTAG_YRESOLUTION},
                               uint32_t{TIFFTAG_XPOSITION},
                               uint32_t{TIFFTAG_YPOSITION}};
constexpr std::array textTags{uint32_t{TIFFTAG_DOCUMENTNAME},
                              uint32_t{TIFFTAG_IMAGEDESCRIPTION},
                              uint32_t{TIFFTAG_MAKE},
                              uint32_t{TIFFTAG_MODEL},
                              uint32_t{TIFFTAG_PAGENAME},
                              uint32_t{TIFFTAG_SOFTWARE},
                              uint32_t{TIFFTAG_DATETIME},
                              uint32_t{TIFFTAG_ARTIST},
                              uint32_t{TIFFTAG_HOSTCOMPUTER},
                              uint32_t{TIFFTAG_COPYRIGHT}};
constexpr std::array pairTags{uint32_t{TIFFTAG_YCBCRSUBSAMPLING},
                              uint32_t{TIFFTAG_HALFTONEHINTS},
                              uint32_t{TIFFTAG_PAGENUMBER}};
constexpr std::array blobTags{uint32_t{TIFFTAG_JPEGTABLES},
                              uint32_t{TIFFTAG_ICCPROFILE},
                              uint32_t{TIFFTAG_XMLPACKET},
                              uint32_t{TIFFTAG_PHOTOSHOP}};

template <typename Value> bool copySingle(TIFF* from, TIFF* to, uint32_t tag) {
    Value value{};
    return TIFFGetField(from, tag, &value) == 0 || TIFFSetField(to, tag, value) != 0;
}

bool copyPair(TIFF* from, TIFF* to, uint32_t tag) {
    uint16_t first = 0;
    uint16_t second = 0;
    return TIFFGetField(from, tag, &first, &second) == 0 ||
           TIFFSetField(to, tag, first, second) != 0;
}

bool copyBlob(TIFF* from, TIFF* to, uint32_t tag) {
    uint32_t count = 0;
    void* bytes = nullptr;
    return TIFFGetField(from, tag, &count, &bytes) == 0 || TIFFSetField(to, tag, count, bytes) != 0;
}

bool copyColourTags(TIFF* from, TIFF* to) {
    uint16_t count = 0;
    uint16_t* kinds = nullptr;
    if (TIFFGetField(from, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 0 && count > 0 &&
        TIFFSetField(to, TIFFTAG_EXTRASAMPLES, count, kinds) == 0)
        return false;
    uint16_t* red = nullptr;
    uint16_t* green = nullptr;
    uint16_t* blue = nullptr;
    if (TIFFGetField(from, TIFFTAG_COLORMAP, &red, &green, &blue) != 0 &&
        TIFFSetField(to, TIFFTAG_COLORMAP, red, green, blue) == 0)
        return false;
    float* range = nullptr;
    return TIFFGetField(from, TIFFTAG_REFERENCEBLACKWHITE, &range) == 0 ||
           TIFFSetField(to, TIFFTAG_REFERENCEBLACKWHITE, range) != 0;
}

template <typename Tags, typename Copy> bool copyEach(const Tags& tags, const Copy& copy) {
    for (const uint32_t tag : tags)
        if (!copy(tag))
            return false;
    return true;
}

uint32_t partCount(TIFF* tiff) {
    return TIFFIsTiled(tiff) != 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
}

uint64_t fileBytes(TIFF* tiff) {
    return TIFFGetSizeProc(tiff)(TIFFClientdata(tiff));
}

} // namespace

bool setTiffPageTags(TIFF* tiff, const TiffPageTags& tags) {
    const bool set = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, tags.widthPixels) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, tags.heightPixels) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, tags.bitsPerSample) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, tags.samplesPerPixel) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, tags.photometric) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, tags.rowsPerStrip) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_XRESOLUTION, tags.horizontalDpi) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_YRESOLUTION, tags.verticalDpi) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW) != 0;
    // The predictor works on whole samples, not on packed bits.
    return set && (tags.bitsPerSample == 1 ||
                   TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) != 0);
}

bool readOwnTiffPageTags(TIFF* tiff, TiffPageTags& tags) {
    if (TIFFIsTiled(tiff) != 0 || numberOf(tiff, TIFFTAG_COMPRESSION) != COMPRESSION_LZW ||
        numberOf(tiff, TIFFTAG_PLANARCONFIG) != PLANARCONFIG_CONTIG ||
        numberOf(tiff, TIFFTAG_ORIENTATION) != ORIENTATION_TOPLEFT ||
        numberOf(tiff, TIFFTAG_FILLORDER) != FILLORDER_MSB2LSB ||
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &tags.widthPixels) == 0 ||
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &tags.heightPixels) == 0)
        return false;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &tags.rowsPerStrip);
    tags.bitsPerSample = numberOf(tiff, TIFFTAG_BITSPERSAMPLE);
    tags.samplesPerPixel = numberOf(tiff, TIFFTAG_SAMPLESPERPIXEL);
    tags.photometric = numberOf(tiff, TIFFTAG_PHOTOMETRIC);
    const uint16_t predictor = numberOf(tiff, TIFFTAG_PREDICTOR);
    if (tags.samplesPerPixel == 3)
        return tags.bitsPerSample == 8 && tags.photometric == PHOTOMETRIC_RGB &&
               predictor == PREDICTOR_HORIZONTAL;
    const uint16_t wanted = tags.bitsPerSample == 1 ? PREDICTOR_NONE : PREDICTOR_HORIZONTAL;
    return tags.samplesPerPixel == 1 && (tags.bitsPerSample == 1 || tags.bitsPerSample == 8) &&
           tags.photometric == PHOTOMETRIC_MINISBLACK && predictor == wanted;
}

bool copyTiffPageTags(TIFF* from, TIFF* to) {
    // The compression first: it defines some of the other tags.
    return copySingle<uint16_t>(from, to, TIFFTAG_COMPRESSION) &&
           copyEach(shortTags, [&](uint32_t tag) { return copySingle<uint16_t>(from, to, tag); }) &&
           copyEach(longTags, [&](uint32_t tag) { return copySingle<uint32_t>(from, to, tag); }) &&
           copyEach(floatTags, [&](uint32_t tag) { return copySingle<float>(from, to, tag); }) &&
           copyEach(textTags, [&](uint32_t tag) { return copySingle<char*>(from, to, tag); }) &&
           copyEach(pairTags, [&](uint32_t tag) { return copyPair(from, to, tag); }) &&
           copyEach(blobTags, [&](uint32_t tag) { return copyBlob(from, to, tag); }) &&
           copyColourTags(from, to);
}

uint64_t tiffDataBytes(TIFF* tiff) {
    const uint64_t size = fileBytes(tiff);
    uint64_t sum = 0;
    for (uint32_t part = 0; part < partCount(tiff); ++part) {
        const uint64_t count = TIFFGetStrileByteCount(tiff, part);
        const uint64_t offset = TIFFGetStrileOffset(tiff, part);
        if (count == 0 || offset == 0 || offset > size || count > size - offset)
            return 0;
        sum += count;
    }
    return sum;
}

bool copyTiffData(TIFF* from, TIFF* to) {
    const bool tiled = TIFFIsTiled(from) != 0;
    std::vector<uint8_t> buffer;
    for (uint32_t part = 0; part < partCount(from); ++part) {
        const uint64_t count = TIFFGetStrileByteCount(from, part);
        if (count > buffer.size()) {
            try {
                buffer.resize(count);
            } catch (const std::bad_alloc&) {
                return false;
            }
        }
        const auto size = static_cast<tmsize_t>(count);
        const tmsize_t read = tiled ? TIFFReadRawTile(from, part, buffer.data(), size)
                                    : TIFFReadRawStrip(from, part, buffer.data(), size);
        if (read != size)
            return false;
        const tmsize_t written = tiled ? TIFFWriteRawTile(to, part, buffer.data(), size)
                                       : TIFFWriteRawStrip(to, part, buffer.data(), size);
        if (written != size)
            return false;
    }
    return true;
}

} // namespace paperline
