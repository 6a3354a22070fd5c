#include "codecs/pictures/PictureFormat.h"

#include <array>

namespace paperline {
namespace {

using namespace std::string_view_literals;

struct Signature {
    std::string_view firstBytes;
    PictureFormat format;
};

constexpr std::array signatures{
    Signature{"BM"sv, PictureFormat::bmp},
    Signature{"GIF87a"sv, PictureFormat::gif},
    Signature{"GIF89a"sv, PictureFormat::gif},
    Signature{"\xFF\xD8\xFF"sv, PictureFormat::jpeg},
    Signature{"\x89PNG\r\n\x1A\n"sv, PictureFormat::png},
    Signature{"P1"sv, PictureFormat::pnm},
    Signature{"P2"sv, PictureFormat::pnm},
    Signature{"P3"sv, PictureFormat::pnm},
    Signature{"P4"sv, PictureFormat::pnm},
    Signature{"P5"sv, PictureFormat::pnm},
    Signature{"P6"sv, PictureFormat::pnm},
    Signature{"II*\0"sv, PictureFormat::tiff},
    Signature{"MM\0*"sv, PictureFormat::tiff},
    Signature{"II+\0"sv, PictureFormat::tiff}, // 64-bit offsets
    Signature{"MM\0+"sv, PictureFormat::tiff},
};

} // namespace

PictureFormat pictureFormat(ByteReader& file) {
    for (const Signature& signature : signatures)
        if (file.hasText(0, signature.firstBytes))
            return signature.format;
    return PictureFormat::none;
}

PictureFormat pictureFormat(const std::string& path) {
    ByteReader file(path);
    return pictureFormat(file);
}

} // namespace paperline
