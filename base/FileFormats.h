// The file formats in the order of their codes. Settings store the code, which is also the position
// in the format list.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace paperline {

inline constexpr int32_t formatBmp = 0;
inline constexpr int32_t formatJpeg = 1;
inline constexpr int32_t formatGif = 2;
inline constexpr int32_t formatPdf = 3;
inline constexpr int32_t formatMultiPagePdf = 4;
inline constexpr int32_t formatTiff = 5;
inline constexpr int32_t formatMultiPageTiff = 6;
inline constexpr int32_t formatPng = 7;

// Types of the image writer.
inline constexpr int32_t imageTypeTiff = 0;
inline constexpr int32_t imageTypeGif = 2;
inline constexpr int32_t imageTypeJpeg = 3;
inline constexpr int32_t imageTypePng = 4;

struct FileFormat {
    int32_t code;
    const char* logLabel;
    const char* extension;   // of the saved file
    const char* listName;    // as the format list shows it
    const char* commandName; // as the command line names it
    int32_t imageType;       // type of the image writer, -1 for BMP
    bool isMultiPage;

    // Pages go to the staging folder first and are joined there.
    constexpr bool isStaged() const { return isMultiPage || code == formatPdf; }
};

inline constexpr std::array<FileFormat, 8> fileFormats{{
    {formatBmp, "FILEFORMAT_BMP", ".bmp", "BMP", "bmp", -1, false},
    {formatJpeg, "FILEFORMAT_JPG", ".jpg", "JPG", "jpg", imageTypeJpeg, false},
    {formatGif, "FILEFORMAT_GIF", ".gif", "GIF", "gif", imageTypeGif, false},
    {formatPdf, "FILEFORMAT_PDF", ".pdf", "PDF", "pdf", imageTypeJpeg, false},
    {formatMultiPagePdf, "FILEFORMAT_MPDF", ".pdf", "Multi-Page PDF", "mpdf", imageTypeJpeg, true},
    {formatTiff, "FILEFORMAT_TIF", ".tif", "TIF", "tif", imageTypeTiff, false},
    {formatMultiPageTiff, "FILEFORMAT_MTIF", ".tif", "Multi-Page TIF", "mtif", imageTypeTiff, true},
    {formatPng, "FILEFORMAT_PNG", ".png", "PNG", "png", imageTypePng, false},
}};

// Null for a code outside the table.
inline const FileFormat* fileFormatOf(int32_t code) {
    return code >= 0 && code < static_cast<int32_t>(fileFormats.size())
               ? &fileFormats[static_cast<size_t>(code)]
               : nullptr;
}

} // namespace paperline
