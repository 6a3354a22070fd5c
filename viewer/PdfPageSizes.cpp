#include "viewer/PdfPageSizes.h"

#include "viewer/FileState.h"
#include "viewer/PdfPages.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace paperline {

namespace {

// Pages are measured one by one: a file may have ten thousand, and a row is being drawn.
struct KnownFile {
    FileState state;
    std::vector<PixelSize> sizes; // per page; 0 x 0: not measured yet
    LargestPageSize largest;      // of the first `compared` pages
    size_t compared = 0;
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

    LargestPageSize largestOf(const std::string& path, std::chrono::milliseconds budget) {
        using Clock = std::chrono::steady_clock;
        KnownFile* file = known(path);
        if (file == nullptr)
            return {};
        const Clock::time_point end = Clock::now() + budget;
        while (file->compared < file->sizes.size()) {
            file->largest.include(measured(path, *file, static_cast<int>(file->compared)));
            ++file->compared;
            if (Clock::now() >= end)
                break;
        }
        file->largest.complete = file->compared == file->sizes.size();
        return file->largest;
    }

private:
    // Null for no regular file; without pages for no PDF file.
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
        file = {*state, {}, {}, 0};
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

    // The last file stays open: the next row is probably of the same file.
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
    // Never deleted: an open document would outlive the application object, which it needs.
    static auto* const sizes = new PdfPageSizes;
    return *sizes;
}

} // namespace

PixelSize pdfPageSize(const std::string& path, int pageIndex) {
    return pdfPageSizes().sizeOf(path, pageIndex);
}

LargestPageSize largestPdfPageSize(const std::string& path, std::chrono::milliseconds budget) {
    return pdfPageSizes().largestOf(path, budget);
}

} // namespace paperline
