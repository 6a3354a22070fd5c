#include "codecs/jpeg/ExifSegment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>

#include <libexif/exif-data.h>
#include <libexif/exif-mem.h>
#include <libexif/exif-utils.h>

namespace paperline {
namespace {

// A segment's length is 16 bits and counts its own two bytes.
constexpr size_t largestContent = 65535 - 2;

struct Releaser {
    void operator()(ExifData* data) const noexcept { exif_data_unref(data); }
    void operator()(ExifEntry* entry) const noexcept { exif_entry_unref(entry); }
    void operator()(ExifMem* memory) const noexcept { exif_mem_unref(memory); }
    void operator()(unsigned char* bytes) const noexcept { std::free(bytes); }
};
template <typename T> using Handle = std::unique_ptr<T, Releaser>;

struct Value {
    ExifTag tag;
    ExifFormat format;
    unsigned long count;
    std::span<const uint8_t> bytes; // in the byte order of the data
};

// Adds an entry whose tag `directory` does not have yet.
bool add(ExifContent* directory, const Value& value) {
    const Handle<ExifMem> memory(exif_mem_new_default());
    const Handle<ExifEntry> entry(memory ? exif_entry_new_mem(memory.get()) : nullptr);
    if (!entry || value.bytes.size() > largestContent)
        return false;
    const auto size = static_cast<unsigned>(value.bytes.size());
    entry->data = static_cast<unsigned char*>(exif_mem_alloc(memory.get(), size));
    if (entry->data == nullptr)
        return false;
    std::copy(value.bytes.begin(), value.bytes.end(), entry->data);
    entry->size = size;
    entry->tag = value.tag;
    entry->format = value.format;
    entry->components = value.count;
    exif_content_add_entry(directory, entry.get());
    return entry->parent == directory;
}

bool addText(ExifContent* directory, ExifTag tag, const std::string& text) {
    std::vector<uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    return add(directory, {tag, EXIF_FORMAT_ASCII, bytes.size(), bytes});
}

bool addLong(ExifContent* directory, ExifTag tag, int32_t number) {
    std::array<uint8_t, 4> bytes{};
    exif_set_long(
        bytes.data(), exif_data_get_byte_order(directory->parent), static_cast<ExifLong>(number));
    return add(directory, {tag, EXIF_FORMAT_LONG, 1, bytes});
}

bool addShort(ExifContent* directory, ExifTag tag, uint16_t number) {
    std::array<uint8_t, 2> bytes{};
    exif_set_short(bytes.data(), exif_data_get_byte_order(directory->parent), number);
    return add(directory, {tag, EXIF_FORMAT_SHORT, 1, bytes});
}

// Whole numbers as N/1, others in hundredths.
bool addResolution(ExifContent* directory, ExifTag tag, double dpi) {
    const double hundredths = std::round(std::clamp(dpi, 0.01, 1e6) * 100);
    const bool isWhole = std::fmod(hundredths, 100) == 0;
    const ExifRational fraction{static_cast<ExifLong>(isWhole ? hundredths / 100 : hundredths),
                                isWhole ? 1U : 100U};
    std::array<uint8_t, 8> bytes{};
    exif_set_rational(bytes.data(), exif_data_get_byte_order(directory->parent), fraction);
    return add(directory, {tag, EXIF_FORMAT_RATIONAL, 1, bytes});
}

bool copyEntry(ExifEntry* entry, ExifContent* to) {
    return entry == nullptr || entry->data == nullptr ||
           add(to,
               {entry->tag, entry->format, entry->components, std::span(entry->data, entry->size)});
}

bool carryOver(ExifData& older, ExifData& newer, bool resolutionIsKnown) {
    ExifContent* from = older.ifd[EXIF_IFD_0];
    ExifContent* to = newer.ifd[EXIF_IFD_0];
    bool done = copyEntry(exif_content_get_entry(from, EXIF_TAG_ORIENTATION), to);
    if (!resolutionIsKnown)
        for (const ExifTag tag :
             {EXIF_TAG_X_RESOLUTION, EXIF_TAG_Y_RESOLUTION, EXIF_TAG_RESOLUTION_UNIT})
            done = done && copyEntry(exif_content_get_entry(from, tag), to);
    return done;
}

bool describe(const ExifPicture& picture, ExifData& data, bool resolutionIsKnown) {
    ExifContent* main = data.ifd[EXIF_IFD_0];
    ExifContent* details = data.ifd[EXIF_IFD_EXIF];
    if (!addText(main, EXIF_TAG_MAKE, picture.make) ||
        !addText(main, EXIF_TAG_MODEL, picture.model) ||
        !addLong(details, EXIF_TAG_PIXEL_X_DIMENSION, picture.widthPixels) ||
        !addLong(details, EXIF_TAG_PIXEL_Y_DIMENSION, picture.heightPixels))
        return false;
    if (resolutionIsKnown && (!addResolution(main, EXIF_TAG_X_RESOLUTION, picture.horizontalDpi) ||
                              !addResolution(main, EXIF_TAG_Y_RESOLUTION, picture.verticalDpi) ||
                              !addShort(main, EXIF_TAG_RESOLUTION_UNIT, 2))) // inches
        return false;
    // The library's default is for colour: Y, Cb, Cr.
    constexpr std::array<uint8_t, 4> luminanceOnly{1, 0, 0, 0};
    return picture.components != 1 ||
           add(details,
               {EXIF_TAG_COMPONENTS_CONFIGURATION, EXIF_FORMAT_UNDEFINED, 4, luminanceOnly});
}

} // namespace

std::optional<std::vector<uint8_t>> exifSegment(const ExifPicture& picture,
                                                std::span<const uint8_t> older) {
    const bool resolutionIsKnown = picture.horizontalDpi > 0 && picture.verticalDpi > 0;
    const Handle<ExifData> data(exif_data_new());
    if (!data || older.size() > largestContent)
        return std::nullopt;
    exif_data_set_byte_order(data.get(), EXIF_BYTE_ORDER_INTEL);
    exif_data_set_data_type(data.get(), EXIF_DATA_TYPE_COMPRESSED);
    if (!older.empty()) {
        const Handle<ExifData> known(
            exif_data_new_from_data(older.data(), static_cast<unsigned>(older.size())));
        if (!known)
            return std::nullopt;
        exif_data_set_byte_order(data.get(), exif_data_get_byte_order(known.get()));
        if (!carryOver(*known, *data, resolutionIsKnown))
            return std::nullopt;
    }
    if (!describe(picture, *data, resolutionIsKnown))
        return std::nullopt;
    exif_data_fix(data.get()); // adds the required tags

    unsigned char* bytes = nullptr;
    unsigned size = 0;
    exif_data_save_data(data.get(), &bytes, &size);
    const Handle<unsigned char> owner(bytes);
    if (bytes == nullptr || size == 0 || size > largestContent)
        return std::nullopt;
    return std::vector<uint8_t>(bytes, bytes + size);
}

} // namespace paperline
