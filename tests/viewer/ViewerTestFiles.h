// Page files for the viewer's tests, written byte by byte where the bytes matter.
#pragma once

#include <QImage>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// A folder that goes with its owner. Its name contains neither "pdf" nor "tif".
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

using Bytes = std::vector<uint8_t>;

void writeBytes(const std::string& path, std::span<const uint8_t> bytes);
void writeText(const std::string& path, const std::string& text);
Bytes readBytes(const std::string& path);
void cutTo(const std::string& path, size_t bytes);

// Four quarters: red top left, green top right, blue bottom left, yellow bottom right.
QImage quarters(int width, int height);

// A JPEG file with an EXIF block in front of its own headers.
struct ExifValues {
    uint16_t orientation = 1;
    uint32_t xResolution = 0; // 0: not stored
    uint32_t yResolution = 0;
    bool bigEndian = false;
};
Bytes exifSegment(const ExifValues& values);
void writeJpeg(const std::string& path, const QImage& image, std::optional<ExifValues> exif = {});

// An uncompressed TIFF file, one directory per page.
struct TiffPage {
    QImage image;
    uint16_t orientation = 1;
    uint32_t xResolution = 300;
    uint32_t yResolution = 300;
    uint16_t resolutionUnit = 2;
};
void writeTiff(const std::string& path, const std::vector<TiffPage>& pages);

// A PDF file whose pages are filled with one colour each.
struct PdfPage {
    double width = 595;
    double height = 842;
    std::string fill = "1 0 0"; // red, green, blue
};
void writePdf(const std::string& path, const std::vector<PdfPage>& pages);

} // namespace paperline
