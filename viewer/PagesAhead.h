// Loads the pages that the user will probably look at next, before the user asks for them.
#pragma once

#include "viewer/FileState.h"
#include "viewer/PageLoader.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace paperline {

struct PagePlace {
    std::string path;
    int pageIndex = 0;
    bool operator==(const PagePlace&) const = default;
};

// The main thread asks for pages and names those it expects; a thread of this object's own loads
// these after a pause for drawing. A page whose file has changed since is loaded again.
class PagesAhead {
public:
    // `load` may run on both threads at once.
    using Loader = std::function<LoadedPage(const std::string& path, int pageIndex)>;
    explicit PagesAhead(Loader load = loadPage);
    ~PagesAhead(); // waits for the page being loaded
    PagesAhead(const PagesAhead&) = delete;
    PagesAhead& operator=(const PagesAhead&) = delete;

    // The page as it is on disk now, expected or not.
    [[nodiscard]] LoadedPage load(const PagePlace& page);

    // Keeps these pages only, and begins to load the missing ones of `next` in their order. Not
    // loaded ahead are pages of more than `mostBytesOfPage`, PDF pages, and files changed within
    // `youngAge`, whose time stamp might not show another change.
    void expect(const PagePlace& shown, const std::vector<PagePlace>& next);

    // An A4 page at 300 dpi in 32-bit colour has 35 MB.
    static constexpr uint64_t mostBytesOfPage = uint64_t{48} << 20U;
    static constexpr std::chrono::seconds youngAge{1};
    static constexpr std::chrono::milliseconds timeToDraw{30};

private:
    struct Entry {
        PagePlace place;
        FileState file;
        LoadedPage page;
    };

    bool isHeld(const PagePlace& place) const;
    std::optional<PagePlace> nextMissing() const;
    void hold(Entry entry);
    void work();
    void loadAhead(const PagePlace& place, std::unique_lock<std::mutex>& lock);

    Loader load_;
    std::mutex mutex_; // guards all below except thread_
    std::condition_variable changed_;
    std::vector<PagePlace> kept_;
    std::vector<PagePlace> leftOut_; // of kept_: not to be loaded ahead
    std::vector<Entry> entries_;
    std::optional<PagePlace> loading_;
    std::chrono::steady_clock::time_point startLoading_;
    bool ends_ = false;
    std::thread thread_;
};

} // namespace paperline
