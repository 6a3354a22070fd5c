#include "bench/SheetLayout.h"

#include "bench/Random.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace paperline::bench {

namespace {

using sources::Drawing;
using sources::Font;
using sources::Ink;

constexpr Ink black{26, 26, 28};
constexpr Ink grey{92, 92, 96};
constexpr Ink rule{150, 150, 152};
constexpr Ink shade{224, 230, 238};
constexpr std::array<Ink, 4> accents{
    Ink{30, 72, 142}, Ink{168, 40, 36}, Ink{32, 112, 70}, Ink{200, 110, 20}};

constexpr double leftMargin = 22;
constexpr double rightMargin = 188;
constexpr double lowestLine = 276;
constexpr double millimetresPerPoint = 25.4 / 72;

constexpr std::array<std::string_view, 48> words{
    "the",     "of",   "and",       "invoice", "delivery", "to",   "paper",   "account",
    "in",      "that", "balance",   "for",     "quarter",  "is",   "storage", "on",
    "regard",  "with", "contract",  "it",      "number",   "as",   "harbour", "was",
    "payment", "by",   "office",    "be",      "received", "at",   "signed",  "from",
    "weight",  "this", "article",   "not",     "meeting",  "are",  "forward", "or",
    "customs", "an",   "reference", "which",   "district", "have", "annual",  "has"};

class SheetWriter {
public:
    SheetWriter(int number, double dpi)
        : random_(static_cast<uint64_t>(number) * 7919 + 17), sheet_{Drawing(dpi), {}} {}

    Sheet finish() && { return std::move(sheet_); }

    void letterhead(int number);
    void heading();
    void paragraph(int lines, Font font);
    void photograph();
    void table(int rows);
    void signature();
    bool hasRoom(double height) const { return y_ + height < lowestLine; }
    uint32_t below(uint32_t limit) { return random_.below(limit); }

private:
    std::string_view word() { return words[below(static_cast<uint32_t>(words.size()))]; }
    std::string amount();
    void line(double y, Font font, double right);

    Random random_;
    Sheet sheet_;
    double y_ = 20;
};

std::string SheetWriter::amount() {
    const std::string cents = std::to_string(100 + below(100));
    return std::to_string(1 + below(98)) + "," + std::to_string(100 + below(900)) + "." +
           cents.substr(1);
}

void SheetWriter::letterhead(int number) {
    const Ink accent = accents[below(static_cast<uint32_t>(accents.size()))];
    sheet_.drawing.rectangle(leftMargin, y_ - 4, 11, 11, accent);
    sheet_.drawing.rectangle(leftMargin + 3, y_ - 1, 8, 8, shade);
    sheet_.drawing.text(leftMargin + 15, y_ + 1, "Westbridge Trading House", {14, true}, black);
    sheet_.drawing.text(leftMargin + 15, y_ + 6, "Quay Road 7", {8, false}, grey);
    sheet_.drawing.text(
        rightMargin - 30, y_ + 1, "No. " + std::to_string(4100 + number), {9, false}, grey);
    sheet_.drawing.rectangle(leftMargin, y_ + 10, rightMargin - leftMargin, 0.4, accent);
    y_ += 22;
}

void SheetWriter::heading() {
    const Ink accent = accents[below(static_cast<uint32_t>(accents.size()))];
    std::string text = std::to_string(1 + below(9)) + ". ";
    for (int count = 0; count < 4; ++count)
        text += std::string(word()) + " ";
    text[3] = static_cast<char>(text[3] - 'a' + 'A');
    sheet_.drawing.text(leftMargin, y_, text, {13, true}, accent);
    y_ += 8;
}

void SheetWriter::line(double y, Font font, double right) {
    double x = leftMargin;
    const double space = sheet_.drawing.textWidth(" ", font);
    while (true) {
        const std::string_view next = word();
        const double width = sheet_.drawing.textWidth(next, font);
        if (x + width > right)
            return;
        sheet_.drawing.text(x, y, next, font, black);
        x += width + space;
    }
}

void SheetWriter::paragraph(int lines, Font font) {
    const double lineHeight = font.sizePoints * 1.45 * millimetresPerPoint;
    for (int count = 0; count < lines && hasRoom(lineHeight); ++count) {
        line(y_, font, count + 1 == lines ? rightMargin - 60 : rightMargin);
        y_ += lineHeight;
    }
    y_ += lineHeight * 0.6;
}

void SheetWriter::photograph() {
    const double width = 70 + below(60), height = width * 0.66;
    if (!hasRoom(height + 8))
        return;
    const double left = leftMargin + below(static_cast<uint32_t>(rightMargin - leftMargin - width));
    sheet_.drawing.photograph(left, y_, width, height);
    sheet_.photographs.push_back({left, y_, width, height});
    sheet_.drawing.text(left, y_ + height + 4, "View of the harbour", {8, false}, grey);
    y_ += height + 12;
}

void SheetWriter::table(int rows) {
    constexpr double rowHeight = 6.5;
    constexpr std::array<double, 4> columns{leftMargin + 2, 84, 122, 158};
    for (int row = 0; row < rows && hasRoom(rowHeight); ++row, y_ += rowHeight) {
        if (row % 2 == 0)
            sheet_.drawing.rectangle(leftMargin, y_, rightMargin - leftMargin, rowHeight, shade);
        sheet_.drawing.rectangle(leftMargin, y_, rightMargin - leftMargin, 0.15, rule);
        const Font font{9, row == 0};
        sheet_.drawing.text(columns[0], y_ + 4.6, word(), font, black);
        for (size_t column = 1; column < columns.size(); ++column)
            sheet_.drawing.text(columns[column], y_ + 4.6, amount(), font, black);
    }
    y_ += 8;
}

void SheetWriter::signature() {
    if (!hasRoom(24))
        return;
    sources::Stroke points;
    for (int step = 0; step < 14; ++step)
        points.push_back({leftMargin + step * 3.2, y_ + 4 + random_.unit() * 9});
    sheet_.drawing.line(sources::smoothStroke(points), 0.5, {28, 40, 150});
    y_ += 24;
}

void fillReport(SheetWriter& writer) {
    while (writer.hasRoom(30)) {
        writer.heading();
        writer.paragraph(3 + static_cast<int>(writer.below(6)), {10, false});
        switch (writer.below(3)) {
        case 0:
            writer.photograph();
            break;
        case 1:
            writer.table(4 + static_cast<int>(writer.below(7)));
            break;
        default:
            writer.paragraph(4 + static_cast<int>(writer.below(8)), {9, false});
        }
    }
}

void fillLetter(SheetWriter& writer) {
    writer.paragraph(1, {11, true});
    for (int count = 0; count < 4; ++count)
        writer.paragraph(3 + static_cast<int>(writer.below(5)), {11, false});
    writer.signature();
    writer.paragraph(3, {7, false});
}

} // namespace

// Of five sheets three are reports, one is a letter, one begins with a photograph.
Sheet layOutSheet(int number, double dpi) {
    SheetWriter writer(number, dpi);
    writer.letterhead(number);
    if (number % 5 == 2) {
        fillLetter(writer);
    } else {
        if (number % 5 == 4)
            writer.photograph();
        fillReport(writer);
    }
    return std::move(writer).finish();
}

} // namespace paperline::bench
