// Maker and model of the scanner, and the producer text of PDF files that carries the model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace paperline {

struct MakeAndModel {
    std::string make;  // up to the first blank, with one blank behind
    std::string model; // the name without every occurrence of the make
};
MakeAndModel splitModelName(const std::string& modelName);

// Where a PDF file keeps its producer text.
struct ProducerPlace {
    std::optional<size_t> key;    // of the word "Producer"
    std::string reference;        // the nine bytes of its value
    std::optional<size_t> object; // of the object it refers to
    size_t text = 0;              // first byte of the text, when there is an object
};
ProducerPlace findProducer(std::span<const uint8_t> pdf);

// Bytes of the producer text that a patch may touch.
inline constexpr size_t producerPatchBytes = 34;

// Writes the model over the text from `text` on, at most 34 bytes, then zero bytes up to the
// closing parenthesis or the 34th. The length of the file stays.
void patchProducer(std::span<uint8_t> pdf, size_t text, const std::string& model);

} // namespace paperline
