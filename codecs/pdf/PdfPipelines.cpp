#include "codecs/pdf/PdfPipelines.h"

#include <qpdf/QPDFCryptoProvider.hh>
#include <qpdf/QUtil.hh>

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace paperline {

namespace {

constexpr size_t bufferBytes = 256 * 1024;
// Of longer pieces, which are image data, the start and the length go into the digest.
constexpr size_t digestedBytes = 4096;
// qpdf's static identifier, which it writes twice.
constexpr std::string_view staticIdentifier = "<31415926535897932384626433832795>";

} // namespace

void PdfImageProvider::provideStreamData(QPDFObjGen const& object, Pipeline* pipeline) {
    const auto found =
        std::lower_bound(objectNumbers_.begin(), objectNumbers_.end(), object.getObj());
    const auto image = static_cast<size_t>(found - objectNumbers_.begin());
    const bool given = found != objectNumbers_.end() && *found == object.getObj() && data_ &&
                       data_(image, [pipeline](const uint8_t* bytes, size_t count) {
                           pipeline->write(bytes, count);
                           return true;
                       });
    if (!given)
        throw std::runtime_error("the image cannot be read");
    pipeline->finish();
}

PdfOutput::PdfOutput(const PdfSink& sink)
    : Pipeline("document", nullptr), sink_(sink), hash_(QPDFCryptoProvider::getImpl()) {
    buffer_.reserve(bufferBytes);
    hash_->MD5_init();
}

void PdfOutput::write(unsigned char const* data, size_t length) {
    const std::string_view piece(reinterpret_cast<const char*>(data), length);
    if (piece == staticIdentifier) {
        const std::string own = identifier();
        append(reinterpret_cast<const unsigned char*>(own.data()), own.size());
    } else {
        digest(data, length);
        append(data, length);
    }
    if (failed_)
        throw std::runtime_error("the document cannot be written");
}

bool PdfOutput::flush() {
    if (!failed_ && !buffer_.empty())
        failed_ = !sink_(reinterpret_cast<const uint8_t*>(buffer_.data()), buffer_.size());
    buffer_.clear();
    return !failed_;
}

void PdfOutput::append(const unsigned char* data, size_t length) {
    if (buffer_.size() + length > bufferBytes && !flush())
        return;
    if (length < bufferBytes)
        buffer_.append(reinterpret_cast<const char*>(data), length);
    else
        failed_ = !sink_(data, length);
}

void PdfOutput::digest(const unsigned char* data, size_t length) {
    if (!identifier_.empty())
        return;
    hash_->MD5_update(data, std::min(length, digestedBytes));
    if (length > digestedBytes) {
        const std::string size = std::to_string(length);
        hash_->MD5_update(reinterpret_cast<const unsigned char*>(size.data()), size.size());
    }
}

std::string PdfOutput::identifier() {
    if (identifier_.empty()) {
        QPDFCryptoImpl::MD5_Digest digest = {};
        hash_->MD5_finalize();
        hash_->MD5_digest(digest);
        identifier_ =
            "<" +
            QUtil::hex_encode(std::string(reinterpret_cast<const char*>(digest), sizeof digest)) +
            ">";
    }
    return identifier_;
}

} // namespace paperline
