#include "viewer/PagesAhead.h"

#include "viewer/PageListRules.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace paperline {

namespace {

bool isYoung(const FileState& file) {
    using namespace std::chrono;
    const auto changed = system_clock::time_point(duration_cast<system_clock::duration>(
        seconds(file.seconds) + nanoseconds(file.nanoseconds)));
    return changed > system_clock::now() - PagesAhead::youngAge;
}

// PDF pages can only be drawn on the main thread.
bool canLoadAhead(const PagePlace& place) {
    constexpr uint64_t bytesPerPixel = 4;
    if (pageFileKind(place.path) == PageFileKind::pdf)
        return false;
    const PixelSize size = pagePixelSize(place.path, place.pageIndex);
    const uint64_t pixels = uint64_t{size.width} * size.height;
    return pixels > 0 && pixels <= PagesAhead::mostBytesOfPage / bytesPerPixel;
}

bool contains(const std::vector<PagePlace>& places, const PagePlace& place) {
    return std::find(places.begin(), places.end(), place) != places.end();
}

} // namespace

PagesAhead::PagesAhead(Loader load) : load_(std::move(load)) {}

PagesAhead::~PagesAhead() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable())
        thread_.join();
}

LoadedPage PagesAhead::load(const PagePlace& page) {
    std::optional<FileState> file;
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return loading_ != page; });
        file = fileState(page.path);
        const auto held = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
            return entry.place == page && entry.file == file;
        });
        if (held != entries_.end())
            return held->page;
    }
    LoadedPage loaded = load_(page.path, page.pageIndex);
    if (file && !isYoung(*file) && loaded.raster != nullptr) {
        const std::lock_guard lock(mutex_);
        hold({page, *file, loaded});
    }
    return loaded;
}

void PagesAhead::expect(const PagePlace& shown, const std::vector<PagePlace>& next) {
    {
        const std::lock_guard lock(mutex_);
        kept_ = {shown};
        kept_.insert(kept_.end(), next.begin(), next.end());
        leftOut_ = {shown};
        std::erase_if(entries_,
                      [this](const Entry& entry) { return !contains(kept_, entry.place); });
        startLoading_ = std::chrono::steady_clock::now() + timeToDraw;
        if (nextMissing() && !thread_.joinable()) {
            try {
                thread_ = std::thread([this] { work(); });
            } catch (const std::exception&) {
                // Without a thread, pages are loaded when they are asked for.
            }
        }
    }
    changed_.notify_all();
}

bool PagesAhead::isHeld(const PagePlace& place) const {
    return std::any_of(
        entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.place == place; });
}

std::optional<PagePlace> PagesAhead::nextMissing() const {
    for (const PagePlace& place : kept_)
        if (!isHeld(place) && !contains(leftOut_, place))
            return place;
    return std::nullopt;
}

void PagesAhead::hold(Entry entry) {
    std::erase_if(entries_, [&](const Entry& older) { return older.place == entry.place; });
    entries_.push_back(std::move(entry));
}

void PagesAhead::work() {
    std::unique_lock lock(mutex_);
    while (!ends_) {
        const std::optional<PagePlace> place = nextMissing();
        if (!place)
            changed_.wait(lock);
        else if (std::chrono::steady_clock::now() < startLoading_)
            changed_.wait_until(lock, startLoading_);
        else
            loadAhead(*place, lock);
    }
}

void PagesAhead::loadAhead(const PagePlace& place, std::unique_lock<std::mutex>& lock) {
    loading_ = place;
    lock.unlock();
    const std::optional<FileState> file = fileState(place.path);
    LoadedPage loaded;
    try {
        if (file && !isYoung(*file) && canLoadAhead(place))
            loaded = load_(place.path, place.pageIndex);
    } catch (const std::exception&) {
        // It is loaded again, and fails again, when it is asked for.
    }
    lock.lock();
    loading_.reset();
    if (loaded.raster == nullptr)
        leftOut_.push_back(place);
    else if (contains(kept_, place))
        hold({place, *file, std::move(loaded)});
    changed_.notify_all();
}

} // namespace paperline
