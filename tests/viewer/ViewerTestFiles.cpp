#include "ViewerTestFiles.h"

#include <QBuffer>
#include <QFile>
#include <QPainter>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace paperline {

namespace {

void append16(Bytes& bytes, unsigned value, bool bigEndian = false) {
    const auto low = static_cast<uint8_t>(value & 0xFFU);
    const auto high = static_cast<uint8_t>(value >> 8U & 0xFFU);
    bytes.push_back(bigEndian ? high : low);
    bytes.push_back(bigEndian ? low : high);
}

void append32(Bytes& bytes, uint32_t value, bool bigEndian = false) {
    append16(bytes, bigEndian ? value >> 16U : value & 0xFFFFU, bigEndian);
    append16(bytes, bigEndian ? value & 0xFFFFU : value >> 16U, bigEndian);
}

void entry(Bytes& bytes, unsigned tag, unsigned type, uint32_t value, bool bigEndian = false) {
    append16(bytes, tag, bigEndian);
    append16(bytes, type, bigEndian);
    append32(bytes, 1, bigEndian);
    if (type == 3) {
        append16(bytes, value, bigEndian);
        append16(bytes, 0, bigEndian);
    } else {
        append32(bytes, value, bigEndian);
    }
}

void store32(Bytes& bytes, size_t at, uint32_t value) {
    Bytes number;
    append32(number, value);
    std::copy(number.begin(), number.end(), bytes.begin() + static_cast<ptrdiff_t>(at));
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/pages-XXXXXX";
    path_ = mkdtemp(pattern.data()) != nullptr ? pattern : std::string();
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void writeBytes(const std::string& path, std::span<const uint8_t> bytes) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored); // a new file is cheaper than a cut and refilled one
    std::ofstream file(path, std::ios::binary);
    for (const uint8_t byte : bytes)
        file.put(static_cast<char>(byte));
}

void writeText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

Bytes readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return {text.begin(), text.end()};
}

void cutTo(const std::string& path, size_t bytes) {
    std::filesystem::resize_file(path, bytes);
}

QImage quarters(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height / 2, Qt::red);
    painter.fillRect(width / 2, 0, width - width / 2, height / 2, Qt::green);
    painter.fillRect(0, height / 2, width / 2, height - height / 2, Qt::blue);
    painter.fillRect(width / 2, height / 2, width - width / 2, height - height / 2, Qt::yellow);
    return image;
}

Bytes exifSegment(const ExifValues& values) {
    const bool big = values.bigEndian;
    const bool hasResolution = values.xResolution != 0;
    const unsigned entries = hasResolution ? 4 : 1;
    Bytes tiff;
    tiff.insert(tiff.end(), 2, big ? 'M' : 'I');
    append16(tiff, 42, big);
    append32(tiff, 8, big);
    append16(tiff, entries, big);
    entry(tiff, 0x112, 3, values.orientation, big);
    if (hasResolution) {
        const uint32_t behind = 8 + 2 + entries * 12 + 4;
        entry(tiff, 0x11A, 5, behind, big);
        entry(tiff, 0x11B, 5, behind + 8, big);
        entry(tiff, 0x128, 3, 2, big);
    }
    append32(tiff, 0, big);
    if (hasResolution)
        for (const uint32_t number : {values.xResolution, 1U, values.yResolution, 1U})
            append32(tiff, number, big);

    Bytes segment{0xFF, 0xE1};
    append16(segment, static_cast<unsigned>(2 + 6 + tiff.size()), true);
    for (const char letter : {'E', 'x', 'i', 'f', '\0', '\0'})
        segment.push_back(static_cast<uint8_t>(letter));
    segment.insert(segment.end(), tiff.begin(), tiff.end());
    return segment;
}

void writeJpeg(const std::string& path, const QImage& image, std::optional<ExifValues> exif) {
    QBuffer buffer;
    image.save(&buffer, "JPG", 95);
    const QByteArray data = buffer.data();
    Bytes bytes(data.begin(), data.end());
    if (exif) {
        const Bytes segment = exifSegment(*exif);
        bytes.insert(bytes.begin() + 2, segment.begin(), segment.end());
    }
    writeBytes(path, bytes);
}

void writeTiff(const std::string& path, const std::vector<TiffPage>& pages) {
    Bytes bytes{'I', 'I', 42, 0};
    size_t link = bytes.size();
    append32(bytes, 0);
    for (const TiffPage& page : pages) {
        const QImage pixels = page.image.convertToFormat(QImage::Format_RGB888);
        const auto rowBytes = static_cast<size_t>(pixels.width()) * 3;
        const auto strip = static_cast<uint32_t>(bytes.size());
        for (int y = 0; y < pixels.height(); ++y)
            bytes.insert(bytes.end(), pixels.constScanLine(y), pixels.constScanLine(y) + rowBytes);
        const auto extra = static_cast<uint32_t>(bytes.size());
        for (const uint32_t number : {page.xResolution, 1U, page.yResolution, 1U})
            append32(bytes, number);
        for (int i = 0; i < 3; ++i)
            append16(bytes, 8);
        store32(bytes, link, static_cast<uint32_t>(bytes.size()));
        append16(bytes, 13);
        entry(bytes, 0x100, 4, static_cast<uint32_t>(pixels.width()));
        entry(bytes, 0x101, 4, static_cast<uint32_t>(pixels.height()));
        append16(bytes, 0x102);
        append16(bytes, 3);
        append32(bytes, 3);
        append32(bytes, extra + 16);
        entry(bytes, 0x103, 3, 1);
        entry(bytes, 0x106, 3, 2);
        entry(bytes, 0x111, 4, strip);
        entry(bytes, 0x112, 3, page.orientation);
        entry(bytes, 0x115, 3, 3);
        entry(bytes, 0x116, 4, static_cast<uint32_t>(pixels.height()));
        entry(bytes,
              0x117,
              4,
              static_cast<uint32_t>(rowBytes) * static_cast<uint32_t>(pixels.height()));
        entry(bytes, 0x11A, 5, extra);
        entry(bytes, 0x11B, 5, extra + 8);
        entry(bytes, 0x128, 3, page.resolutionUnit);
        link = bytes.size();
        append32(bytes, 0);
    }
    writeBytes(path, bytes);
}

void writePdf(const std::string& path, const std::vector<PdfPage>& pages) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    std::vector<size_t> offsets;
    const auto object = [&](const std::string& body) {
        offsets.push_back(static_cast<size_t>(out.tellp()));
        out << offsets.size() << " 0 obj\n" << body << "\nendobj\n";
    };
    out << "%PDF-1.4\n";
    object("<</Type/Catalog/Pages 2 0 R>>");
    std::ostringstream kids;
    for (size_t i = 0; i < pages.size(); ++i)
        kids << 3 + 2 * i << " 0 R ";
    object("<</Type/Pages/Count " + std::to_string(pages.size()) + "/Kids[" + kids.str() + "]>>");
    for (const PdfPage& page : pages) {
        std::ostringstream box, content;
        box << page.width << " " << page.height;
        content << page.fill << " rg 0 0 " << box.str() << " re f";
        object("<</Type/Page/Parent 2 0 R/MediaBox[0 0 " + box.str() + "]/Contents " +
               std::to_string(offsets.size() + 2) + " 0 R>>");
        object("<</Length " + std::to_string(content.str().size()) + ">>stream\n" + content.str() +
               "\nendstream");
    }
    const auto table = static_cast<size_t>(out.tellp());
    out << "xref\n0 " << offsets.size() + 1 << "\n0000000000 65535 f \n";
    for (const size_t offset : offsets) {
        const std::string digits = std::to_string(offset);
        out << std::string(10 - digits.size(), '0') << digits << " 00000 n \n";
    }
    out << "trailer<</Size " << offsets.size() + 1 << "/Root 1 0 R>>\nstartxref\n"
        << table << "\n%%EOF\n";
    writeText(path, out.str());
}

} // namespace paperline
