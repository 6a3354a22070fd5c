// The compressed picture of a PNG file, opened chunk by chunk.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace paperline {

// Our own writer begins every IDAT chunk with compressed data that refers to nothing before it.
// Such chunks are opened here by a helper thread and by the reader in turn: half of a large page is
// opened while the other half is read.
class PngStream {
public:
    // Null when the file's chunks cannot be such, or hold too little to be worth it. Borrows the
    // file.
    static std::unique_ptr<PngStream> open(std::span<const uint8_t> file);
    ~PngStream();
    PngStream(const PngStream&) = delete;
    PngStream& operator=(const PngStream&) = delete;

    // What is in the next chunk, good until the next call: filtered rows, from any byte to any. One
    // byte more than that may be read. Empty behind the last one, and when a chunk or the whole is
    // damaged, or does not stand for itself.
    std::span<const uint8_t> next();

    // Whether every chunk was taken, and was as it should be.
    bool isThrough() const;

private:
    class OpenedChunks;
    explicit PngStream(std::unique_ptr<OpenedChunks> opened);

    std::unique_ptr<OpenedChunks> opened_;
};

} // namespace paperline
