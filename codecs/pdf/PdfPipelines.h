// What stands between qpdf's writer and the rest: where images come from, where bytes go.
#pragma once

#include "codecs/pdf/PdfDocument.h"

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFCryptoImpl.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <memory>
#include <string>
#include <vector>

namespace paperline {

// Asks for an image's data when the writer comes to it.
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

// Gathers the writer's many small pieces, and gives the document an identifier that is made of its
// own content: the writer's are made of the clock, or of every byte, which takes as long as all the
// rest.
class PdfOutput : public Pipeline {
public:
    explicit PdfOutput(const PdfSink& sink);
    void write(unsigned char const* data, size_t length) override;
    void finish() override { (void)flush(); } // also called while an exception is on its way
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
