// Input and output of qpdf's writer.
#pragma once

#include "codecs/pdf/PdfDocument.h"

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFCryptoImpl.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <memory>
#include <string>
#include <vector>

namespace paperline {

// Reads an image when the writer comes to it.
class PdfImageProvider : public QPDFObjectHandle::StreamDataProvider {
public:
    void addImage(int objectNumber) { objectNumbers_.push_back(objectNumber); }
    void setData(PdfImageData data) { data_ = std::move(data); }
    using StreamDataProvider::provideStreamData;
    void provideStreamData(QPDFObjGen const& object, Pipeline* pipeline) override;

private:
    std::vector<int> objectNumbers_; // ascending, one per image
    PdfImageData data_;
};

// Buffers the writer's small pieces and makes the document's identifier from its content. qpdf's
// own identifiers depend on the clock or digest every byte, which doubles the time.
class PdfOutput : public Pipeline {
public:
    explicit PdfOutput(const PdfSink& sink);
    void write(unsigned char const* data, size_t length) override;
    void finish() override { (void)flush(); } // also called during stack unwinding
    [[nodiscard]] bool flush();

private:
    void digest(const unsigned char* data, size_t length);
    std::string identifier();
    void append(const unsigned char* data, size_t length);

    const PdfSink& sink_;
    std::string buffer_;
    std::shared_ptr<QPDFCryptoImpl> hash_;
    std::string identifier_;
    bool failed_ = false;
};

} // namespace paperline
