// Remembers the page sizes of PDF files from one draw to the next.
#include "viewer/FileState.h"
#include "viewer/PdfPages.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <vector>

namespace paperline {

namespace {

// One file as it was when its pages were asked for. Pages are measured one by one: a file of ten
// thousand must not hold up the row that is being drawn.
struct KnownFile {
    FileState state;
    std::vector<PixelSize> sizes; // one per page; zero: not measured yet
};

class PdfPageSizes {
public:
    PixelSize sizeOf(const std::string& path, int pageIndex) {
        KnownFile* file = known(path);
        if (file == nullptr || pageIndex < 0 ||
            static_cast<size_t>(pageIndex) >= file->sizes.size())
            return {};
        return measured(path, *file, pageIndex);
    }

    PixelSize largestOf(const std::string& path) {
        PixelSize largest;
        KnownFile* file = known(path);
        const int pages = file == nullptr ? 0 : static_cast<int>(file->sizes.size());
        for (int page = 0; page < pages; ++page) {
            const PixelSize size = measured(path, *file, page);
            largest.width = std::max(largest.width, size.width);
            largest.height = std::max(largest.height, size.height);
        }
        return largest;
    }

private:
    // Null when the path is no regular file; without pages when it is no PDF file.
    KnownFile* known(const std::string& path) {
        constexpr size_t maximumFiles = 1024;
        const std::optional<FileState> state = fileState(path);
        if (!state) {
            files_.erase(path);
            return nullptr;
        }
        const auto found = files_.find(path);
        if (found != files_.end() && found->second.state == *state)
            return &found->second;
        if (files_.size() >= maximumFiles)
            files_.clear();
        open_.reset();
        KnownFile& file = files_[path];
        file = {*state, {}};
        if (const PdfPages* pages = document(path))
            file.sizes.resize(static_cast<size_t>(pages->count()));
        return &file;
    }

    PixelSize measured(const std::string& path, KnownFile& file, int pageIndex) {
        PixelSize& size = file.sizes[static_cast<size_t>(pageIndex)];
        if (size == PixelSize{})
            if (const PdfPages* pages = document(path))
                size = pages->pixelSize(pageIndex);
        return size;
    }

    // The last file stays open: its neighbouring rows are drawn next.
    const PdfPages* document(const std::string& path) {
        if (!open_ || openPath_ != path) {
            open_ = std::make_unique<PdfPages>();
            openPath_ = path;
            if (!open_->open(path))
                open_.reset();
        }
        return open_.get();
    }

    std::unordered_map<std::string, KnownFile> files_;
    std::unique_ptr<PdfPages> open_;
    std::string openPath_;
};

PdfPageSizes& pdfPageSizes() {
    // Never taken down: an open file must not outlive the application object it would need.
    static auto* const sizes = new PdfPageSizes;
    return *sizes;
}

} // namespace

PixelSize pdfPageSize(const std::string& path, int pageIndex) {
    return pdfPageSizes().sizeOf(path, pageIndex);
}

PixelSize largestPdfPageSize(const std::string& path) {
    return pdfPageSizes().largestOf(path);
}

} // namespace paperline
