// Maker and model of the scanner, and the producer text of PDF files that carries the model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace paperline {

struct MakeAndModel {
    std::string make;  // up to the first blank, with one blank behind
    std::string model; // the name without every occurrence of the make
};
MakeAndModel splitModelName(const std::string& modelName);

// A file as the patch sees it.
struct FileToPatch {
    // The first place of the bytes in the file.
    std::function<std::optional<uint64_t>(std::string_view bytes)> find;
    // As many bytes as the file has there, at most `count`.
    std::function<std::vector<uint8_t>(uint64_t position, size_t count)> read;
};

// Where a PDF file keeps its producer text.
struct ProducerPlace {
    std::optional<uint64_t> key;    // of the word "Producer"
    std::string reference;          // the nine bytes of its value
    std::optional<uint64_t> object; // of the object it refers to
    uint64_t text = 0;              // first byte of the text, when there is an object
};
ProducerPlace findProducer(const FileToPatch& pdf);

// Bytes of the producer text that a patch may touch.
inline constexpr size_t producerPatchBytes = 34;

// Writes the model over the text, at most 34 bytes, then zero bytes up to the closing parenthesis
// or the 34th. What lies behind the 34th byte stays.
void patchProducer(std::span<uint8_t> text, const std::string& model);

} // namespace paperline
