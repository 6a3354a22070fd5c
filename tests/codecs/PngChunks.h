// PNG files as lists of chunks, for tests of what is made of them.
#pragma once

#include "PictureFiles.h"

#include <algorithm>
#include <string>
#include <vector>

namespace paperline::testing_support {

inline size_t lengthAt(const Bytes& file, size_t at) {
    return size_t{file[at]} << 24U | size_t{file[at + 1]} << 16U | size_t{file[at + 2]} << 8U |
           file[at + 3];
}

struct PngChunk {
    std::string type;
    Bytes content;
};

inline std::vector<PngChunk> chunksOf(const Bytes& file) {
    std::vector<PngChunk> chunks;
    for (size_t at = 8; at + 12 <= file.size(); at += 12 + lengthAt(file, at)) {
        const auto type = file.begin() + static_cast<ptrdiff_t>(at + 4);
        const auto content = type + 4;
        chunks.push_back(
            {{type, content}, {content, content + static_cast<ptrdiff_t>(lengthAt(file, at))}});
    }
    return chunks;
}

inline Bytes fileOf(const std::vector<PngChunk>& chunks) {
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const PngChunk& chunk : chunks)
        append(file, pngChunk(chunk.type, chunk.content));
    return file;
}

// The same stream, cut where nothing in it asks for it.
inline Bytes cutElsewhere(const Bytes& file, size_t pieceBytes) {
    std::vector<PngChunk> chunks;
    Bytes stream;
    for (const PngChunk& chunk : chunksOf(file)) {
        if (chunk.type == "IDAT")
            append(stream, chunk.content);
        else if (chunk.type != "IEND")
            chunks.push_back(chunk);
    }
    for (size_t at = 0; at < stream.size(); at += pieceBytes) {
        const size_t end = std::min(stream.size(), at + pieceBytes);
        chunks.push_back({"IDAT",
                          {stream.begin() + static_cast<ptrdiff_t>(at),
                           stream.begin() + static_cast<ptrdiff_t>(end)}});
    }
    chunks.push_back({"IEND", {}});
    return fileOf(chunks);
}

} // namespace paperline::testing_support
