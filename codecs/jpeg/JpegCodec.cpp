#include "codecs/jpeg/JpegCodec.h"

#include "codecs/jpeg/JpegHeader.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <new>

#include <jerror.h>
#include <jpeglib.h>

// The library reports errors by longjmp. A function that calls setjmp has no locals with a
// destructor and changes none of its locals afterwards; its caller owns what must be released.

namespace paperline {
namespace {

constexpr int32_t maximumSide = 65500;
// Thousands of progressive scans over a large page would take hours to decode.
constexpr int maximumScans = 200;

struct ErrorManager {
    jpeg_error_mgr base{}; // first: libjpeg's pointer to it is cast back
    std::jmp_buf target{};
    bool damaged = false;
};

ErrorManager& errorsOf(j_common_ptr info) {
    return *reinterpret_cast<ErrorManager*>(info->err);
}

[[noreturn]] void leave(j_common_ptr info) {
    std::longjmp(errorsOf(info).target, 1);
}

// Warnings that do not mean damaged pixels.
bool isHarmless(int messageCode) {
    return messageCode == JWRN_EXTRANEOUS_DATA || messageCode == JWRN_ADOBE_XFORM ||
           messageCode == JWRN_JFIF_MAJOR || messageCode == JWRN_BOGUS_PROGRESSION;
}

void noteWarning(j_common_ptr info, int level) {
    if (level < 0 && !isHarmless(info->err->msg_code))
        errorsOf(info).damaged = true;
}

void printNothing(j_common_ptr /*info*/) {}

jpeg_error_mgr* prepare(ErrorManager& errors) {
    jpeg_std_error(&errors.base);
    errors.base.error_exit = leave;
    errors.base.emit_message = noteWarning;
    errors.base.output_message = printNothing;
    return &errors.base;
}

// Writes the file to a vector.
struct VectorDestination {
    jpeg_destination_mgr base{};
    std::vector<uint8_t> bytes;
};

VectorDestination& destinationOf(j_compress_ptr info) {
    return *reinterpret_cast<VectorDestination*>(info->dest);
}

bool resizeTo(std::vector<uint8_t>& bytes, size_t size) {
    try {
        bytes.resize(size);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void startDestination(j_compress_ptr info) {
    VectorDestination& destination = destinationOf(info);
    destination.base.next_output_byte = destination.bytes.data();
    destination.base.free_in_buffer = destination.bytes.size();
}

boolean growDestination(j_compress_ptr info) {
    VectorDestination& destination = destinationOf(info);
    const size_t filled = destination.bytes.size();
    if (!resizeTo(destination.bytes, filled * 2))
        ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
    destination.base.next_output_byte = destination.bytes.data() + filled;
    destination.base.free_in_buffer = destination.bytes.size() - filled;
    return TRUE;
}

void endDestination(j_compress_ptr info) {
    VectorDestination& destination = destinationOf(info);
    destination.bytes.resize(destination.bytes.size() - destination.base.free_in_buffer);
}

class Encoder {
public:
    Encoder() { info_.err = prepare(errors_); }
    ~Encoder() { jpeg_destroy_compress(&info_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    std::optional<std::vector<uint8_t>> encode(const BitmapImageRep& page,
                                               const JpegOptions& options) {
        const auto rowSamples = static_cast<size_t>(page.pixelsWide());
        std::vector<uint8_t> greyRow;
        // Enough for most pages; the buffer doubles when it is full.
        const size_t guess = page.bitmapData().size() / 32 + 65536;
        if (!resizeTo(greyRow, page.bitsPerPixel() == 1 ? rowSamples : 0) ||
            !resizeTo(destination_.bytes, guess))
            return std::nullopt;
        destination_.base.init_destination = startDestination;
        destination_.base.empty_output_buffer = growDestination;
        destination_.base.term_destination = endDestination;
        if (!start(page, options) || !writeRows(page, greyRow.data()))
            return std::nullopt;
        return std::move(destination_.bytes);
    }

private:
    bool start(const BitmapImageRep& page, const JpegOptions& options) {
        if (setjmp(errors_.target) != 0)
            return false;
        jpeg_create_compress(&info_);
        info_.dest = &destination_.base;
        info_.image_width = static_cast<JDIMENSION>(page.pixelsWide());
        info_.image_height = static_cast<JDIMENSION>(page.pixelsHigh());
        info_.input_components = page.bitsPerPixel() == 24 ? 3 : 1;
        info_.in_color_space = page.bitsPerPixel() == 24 ? JCS_RGB : JCS_GRAYSCALE;
        jpeg_set_defaults(&info_);
        jpeg_set_quality(&info_, std::clamp(options.quality, 1, 100), TRUE);
        info_.density_unit = 1; // dots per inch
        info_.X_density = options.horizontalDpi;
        info_.Y_density = options.verticalDpi;
        jpeg_start_compress(&info_, TRUE);
        return true;
    }

    bool writeRows(const BitmapImageRep& page, uint8_t* greyRow) {
        if (setjmp(errors_.target) != 0)
            return false;
        while (info_.next_scanline < info_.image_height) {
            const std::span<const uint8_t> row =
                page.row(static_cast<int32_t>(info_.next_scanline));
            // The library only reads them.
            JSAMPROW samples = const_cast<uint8_t*>(row.data());
            if (page.bitsPerPixel() == 1) {
                expandBits(row, {greyRow, info_.image_width}, 255);
                samples = greyRow;
            }
            jpeg_write_scanlines(&info_, &samples, 1);
        }
        jpeg_finish_compress(&info_);
        return true;
    }

    ErrorManager errors_;
    VectorDestination destination_;
    jpeg_compress_struct info_{};
};

void limitScans(j_common_ptr info) {
    if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > maximumScans)
        leave(info);
}

class Decoder {
public:
    Decoder() {
        info_.err = prepare(errors_);
        progress_.progress_monitor = limitScans;
    }
    ~Decoder() { jpeg_destroy_decompress(&info_); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    bool readHeader(std::span<const uint8_t> bytes) {
        if (setjmp(errors_.target) != 0)
            return false;
        jpeg_create_decompress(&info_);
        info_.progress = &progress_;
        jpeg_mem_src(&info_, bytes.data(), static_cast<unsigned long>(bytes.size()));
        jpeg_read_header(&info_, TRUE);
        if (info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK)
            info_.out_color_space = JCS_CMYK;
        else if (info_.jpeg_color_space != JCS_GRAYSCALE)
            info_.out_color_space = JCS_RGB;
        return !errors_.damaged;
    }

    PixelSize size() const { return {info_.image_width, info_.image_height}; }

    std::optional<DecodedImage> decode() {
        DecodedImage result;
        const bool isGrey = info_.out_color_space == JCS_GRAYSCALE;
        const bool isCmyk = info_.out_color_space == JCS_CMYK;
        std::vector<uint8_t> cmykRow;
        result.image = BitmapImageRep::makePage(static_cast<int32_t>(info_.image_width),
                                                static_cast<int32_t>(info_.image_height),
                                                isGrey ? 8 : 24);
        if (!result.image || !resizeTo(cmykRow, isCmyk ? size_t{4} * info_.image_width : 0) ||
            !readRows(*result.image, isCmyk ? cmykRow.data() : nullptr) || errors_.damaged)
            return std::nullopt;
        if (info_.saw_JFIF_marker) {
            result.horizontalDpi = jpegDpi(info_.density_unit, info_.X_density);
            result.verticalDpi = jpegDpi(info_.density_unit, info_.Y_density);
        }
        return result;
    }

private:
    bool readRows(BitmapImageRep& image, uint8_t* cmykRow) {
        if (setjmp(errors_.target) != 0)
            return false;
        jpeg_start_decompress(&info_);
        while (info_.output_scanline < info_.output_height) {
            const std::span<uint8_t> row = image.row(static_cast<int32_t>(info_.output_scanline));
            JSAMPROW samples = cmykRow != nullptr ? cmykRow : row.data();
            if (jpeg_read_scanlines(&info_, &samples, 1) != 1)
                return false;
            if (cmykRow != nullptr)
                putRgb(cmykRow, row);
        }
        jpeg_finish_decompress(&info_);
        return true;
    }

    // Adobe stores CMYK inverted.
    void putRgb(const uint8_t* cmyk, std::span<uint8_t> rgb) const {
        const unsigned inverted = info_.saw_Adobe_marker ? 0U : 255U;
        for (size_t x = 0; x < info_.output_width; ++x) {
            const unsigned black = cmyk[4 * x + 3] ^ inverted;
            for (size_t channel = 0; channel < 3; ++channel)
                rgb[3 * x + channel] =
                    static_cast<uint8_t>(((cmyk[4 * x + channel] ^ inverted) * black + 127) / 255);
        }
    }

    ErrorManager errors_;
    jpeg_progress_mgr progress_{};
    jpeg_decompress_struct info_{};
};

bool isEncodable(const BitmapImageRep& page) {
    return page.pixelsWide() <= maximumSide && page.pixelsHigh() <= maximumSide &&
           hasPageLayout(page);
}

} // namespace

std::optional<std::vector<uint8_t>> encodeJpeg(const BitmapImageRep& page,
                                               const JpegOptions& options) {
    if (!isEncodable(page))
        return std::nullopt;
    Encoder encoder;
    return encoder.encode(page, options);
}

std::optional<DecodedImage> decodeJpeg(std::span<const uint8_t> bytes, uint64_t maximumPixels) {
    Decoder decoder;
    if (bytes.empty() || !decoder.readHeader(bytes) || !isWithin(decoder.size(), maximumPixels))
        return std::nullopt;
    return decoder.decode();
}

} // namespace paperline
