// The pages that every comparison uses: drawn when first asked for, and kept as PNM files.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <memory>
#include <string>

namespace paperline::bench {

enum class PageKind { colour, grey, bilevel };

struct BenchPage {
    std::shared_ptr<BitmapImageRep> pixels; // its size in points says its resolution
    std::string pnmFile;                    // the same pixels: binary PPM, PGM or PBM
};

class PageSet {
public:
    // Small pages have a third of the resolution that is asked for: they show that everything runs.
    enum class Size { asked, small };

    // Files go into that folder and stay; without one, into a folder below the system's temporary
    // one that is removed at the end.
    explicit PageSet(const std::string& keptFolder = {}, Size size = Size::asked);
    ~PageSet();
    PageSet(const PageSet&) = delete;
    PageSet& operator=(const PageSet&) = delete;

    const std::string& folder() const { return folder_; }
    // Pages count from 1. Ends the program when there is no memory or no room for the file.
    BenchPage page(PageKind kind, int dpi, int number) const;

private:
    void draw(PageKind kind, int dpi, int number, const std::string& file) const;

    std::string folder_;
    bool isKept_;
    bool isSmall_;
};

} // namespace paperline::bench
