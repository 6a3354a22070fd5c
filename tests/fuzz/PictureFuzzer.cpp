// Pages as users' folders hold them: the readers of pictures, on any bytes. What reads the chunks
// of large PNG pages side by side begins beyond the size that a fuzzer reaches; its tests damage
// them.
#include "codecs/gif/GifDecoder.h"
#include "codecs/pictures/PictureHeader.h"
#include "codecs/pictures/PictureReader.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
    constexpr uint64_t fewPixels = 1U << 20;
    constexpr int fewPages = 4;
    (void)paperline::decodeGif({bytes, count}, fewPixels);
    // The other readers ask for a file.
    const int file = memfd_create("picture", MFD_CLOEXEC);
    if (file < 0 || write(file, bytes, count) != static_cast<ssize_t>(count))
        return -1;
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    (void)paperline::readPictureSizes(path);
    (void)paperline::picturePageCount(path);
    for (int page = 0; page < fewPages; ++page) {
        (void)paperline::readPictureHeader(path, page);
        (void)paperline::readPicture(path, page, fewPixels);
    }
    close(file);
    return 0;
}
