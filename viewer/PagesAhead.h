// Loads the pages that will probably be looked at next, so that they are there when they are.
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

// One thread asks for pages and says which it expects; a thread of this object's own loads them
// once the asking one had time to draw. Files may change, vanish and come back meanwhile: a page is
// given only as long as its file is in the state from which the page was loaded.
class PagesAhead {
public:
    // `load` is loadPage, and may run on both threads at once.
    using Loader = std::function<LoadedPage(const std::string& path, int pageIndex)>;
    explicit PagesAhead(Loader load = loadPage);
    ~PagesAhead(); // waits for a page that is being loaded
    PagesAhead(const PagesAhead&) = delete;
    PagesAhead& operator=(const PagesAhead&) = delete;

    // The page as it is on disk now, whether it was expected or not.
    [[nodiscard]] LoadedPage load(const PagePlace& page);

    // Keeps the page that is shown, lets go of all others but the next ones, and begins to load
    // those of them that are missing, in this order. Left out are pages whose pixels need more than
    // `mostBytesOfPage`, pages of PDF files, and files that were written within `youngAge`: a clock
    // of coarse steps would not tell another change.
    void expect(const PagePlace& shown, const std::vector<PagePlace>& next);

    // An A4 page of 300 dpi in 32-bit colour has 35 MB.
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
    std::mutex mutex_; // guards all below but the thread
    std::condition_variable changed_;
    std::vector<PagePlace> kept_;
    std::vector<PagePlace> leftOut_; // of those: they are not to be loaded ahead
    std::vector<Entry> entries_;
    std::optional<PagePlace> loading_;
    std::chrono::steady_clock::time_point startLoading_;
    bool ends_ = false;
    std::thread thread_;
};

} // namespace paperline
