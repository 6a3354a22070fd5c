#include "output/PdfCodecs.h"

#include "codecs/pdf/PdfFiles.h"
#include "platform/host/Host.h"

#include <utility>

namespace paperline {

namespace {

int64_t now() {
    return static_cast<int64_t>(host().secondsSinceEpoch());
}

class Joiner : public PageJoiner {
public:
    explicit Joiner(std::unique_ptr<PdfJoiner> joiner) : joiner_(std::move(joiner)) {}

    Added add(const std::string& pageFile) override {
        if (!joiner_)
            return Added::outputFailed;
        switch (joiner_->add(pageFile)) {
        case PdfJoiner::Added::yes:
            return Added::yes;
        case PdfJoiner::Added::unreadable:
            return Added::unreadable;
        case PdfJoiner::Added::outputFailed:
            break;
        }
        return Added::outputFailed;
    }
    bool finish() override { return joiner_ && joiner_->finish(); }

private:
    std::unique_ptr<PdfJoiner> joiner_;
};

class Source : public PdfSource {
public:
    explicit Source(std::unique_ptr<PdfPageSource> pages) : pages_(std::move(pages)) {}

    int pageCount() const override { return pages_->pageCount(); }
    Rect mediaBox(int page) const override { return pages_->mediaBox(page); }
    const PdfPageSource& pages() const { return *pages_; }

private:
    std::unique_ptr<PdfPageSource> pages_;
};

class Context : public PdfContext {
public:
    explicit Context(std::unique_ptr<PdfDrawing> drawing) : drawing_(std::move(drawing)) {}

    void beginPage(const Rect& mediaBox) override { drawing_->beginPage(mediaBox); }
    void drawPage(const PdfSource& source, int page) override {
        if (const auto* file = dynamic_cast<const Source*>(&source))
            drawing_->drawPage(file->pages(), page);
    }
    void endPage() override { drawing_->endPage(); }
    void close() override { (void)drawing_->close(); } // a context has no result

private:
    std::unique_ptr<PdfDrawing> drawing_;
};

std::unique_ptr<PageJoiner> openJoiner(const std::string& outputPath) {
    std::unique_ptr<PdfJoiner> joiner = PdfJoiner::open(outputPath, now());
    return std::make_unique<Joiner>(std::move(joiner));
}

std::unique_ptr<PdfSource> openSource(const std::string& path) {
    std::unique_ptr<PdfPageSource> pages = PdfPageSource::open(path);
    return pages ? std::make_unique<Source>(std::move(pages)) : nullptr;
}

std::unique_ptr<PdfContext> openContext(const std::string& path) {
    std::unique_ptr<PdfDrawing> drawing = PdfDrawing::open(path, now());
    return drawing ? std::make_unique<Context>(std::move(drawing)) : nullptr;
}

} // namespace

void addPdfCodecs(PageCodecs& codecs) {
    codecs.pdf = openJoiner;
    codecs.openPdf = openSource;
    codecs.createPdfContext = openContext;
    codecs.pdfOfImage = [](const BitmapImageRep& image, Size pageSize) {
        return pdfOfPicture(image, pageSize, now());
    };
}

} // namespace paperline
