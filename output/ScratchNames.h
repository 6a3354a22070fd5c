// The program's own files below /tmp.
#pragma once

#include <functional>
#include <string>

namespace paperline {

// Fixed scratch names. They go through platform/places/Places before they reach the disk.
inline constexpr const char* scratchVolume = "/tmp";
inline constexpr const char* scratchRootName = "/tmp/CorvaneTempImage";
inline constexpr const char* stagingFolderName = "/tmp/CorvaneTempImage/MultiImage";
inline constexpr const char* listStagingFolderName = "/tmp/CorvaneTempImage/MultiImage_Scale";
inline constexpr const char* joinedPdfName = "/tmp/CorvaneTempImage/TmpImage.pdf";
inline constexpr const char* joinedTiffName = "/tmp/CorvaneTempImage/TmpImage.tif";
inline constexpr const char* previewName = "/tmp/CPL_image.bmp";
inline constexpr const char* thumbnailName = "/tmp/1.jpg";

// True for the program's own files: the preview, the thumbnail's copy, and whatever lies below the
// temporary root. `scratchNames` gives the place of a name below /tmp.
using ScratchPlaces = std::function<std::string(const std::string& nameBelowTmp)>;
bool isScratchFile(const std::string& path, const ScratchPlaces& scratchPlace);

} // namespace paperline
