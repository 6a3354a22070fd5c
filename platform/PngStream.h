// A PNG file as the decoder reads it, with the compressed picture opened ahead of it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace paperline {

// Our own writer begins every IDAT chunk with compressed data that refers to nothing before it.
// Such chunks are opened here, by a helper thread and by the reader in turn, and handed on as
// stored data, for which a decoder needs next to no time: half of a large page's decoding is done
// while the other half goes on. Other files are handed on as they are.
class PngStream {
public:
    enum class Picture {
        asStored,
        openedAhead, // where the chunks allow it, and the picture is large enough to be worth it
    };

    PngStream(std::span<const uint8_t> file, Picture picture); // borrows the file
    ~PngStream();
    PngStream(const PngStream&) = delete;
    PngStream& operator=(const PngStream&) = delete;

    // The next bytes. False when there are not as many, or a chunk turned out to be damaged or not
    // to stand for itself.
    [[nodiscard]] bool read(std::span<uint8_t> target);

    // The chunks' checksums, and that of their content, are tested here instead of by the decoder:
    // those that it sees are not kept up.
    bool isOpenedAhead() const { return opened_ != nullptr; }

private:
    class OpenedChunks;

    std::span<const uint8_t> now_;    // what is left of the piece that is being read
    std::span<const uint8_t> behind_; // what follows the picture
    std::unique_ptr<OpenedChunks> opened_;
};

} // namespace paperline
