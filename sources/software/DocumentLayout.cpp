// The office report: letterhead, text, a chart, a photograph, a table and a signature. Laid out in
// millimetres on a sheet 210 wide and scaled to the sheet's real width; a short sheet is cut.
#include "sources/software/DocumentPage.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

namespace {

constexpr Ink black{28, 28, 30};
constexpr Ink softBlack{70, 70, 74};
constexpr Ink blue{34, 74, 140};
constexpr Ink lightBlue{116, 160, 212};
constexpr Ink orange{206, 92, 24};
constexpr Ink rule{116, 116, 118};
constexpr Ink shade{222, 228, 236};
constexpr Ink penBlue{24, 36, 150};

constexpr double leftMargin = 24;
constexpr double rightMargin = 186;
constexpr double lineHeight = 5.2;

class Report {
public:
    Report(Drawing& drawing, double scale) : drawing_(drawing), scale_(scale) {}

    void box(double x, double y, double width, double height, Ink ink) {
        drawing_.rectangle(x * scale_, y * scale_, width * scale_, height * scale_, ink);
    }
    void text(double x, double y, std::string_view words, Font font, Ink ink) {
        drawing_.text(x * scale_, y * scale_, words, scaled(font), ink);
    }
    void textRight(double x, double y, std::string_view words, Font font, Ink ink) {
        text(x - width(words, font), y, words, font, ink);
    }
    void textCentred(double x, double y, std::string_view words, Font font, Ink ink) {
        text(x - width(words, font) / 2, y, words, font, ink);
    }
    void line(Stroke points, double pen, Ink ink) {
        for (StrokePoint& point : points)
            point = {point.x * scale_, point.y * scale_};
        drawing_.line(points, pen * scale_, ink);
    }
    void photograph(double x, double y, double width, double height) {
        drawing_.photograph(x * scale_, y * scale_, width * scale_, height * scale_);
    }
    double paragraph(double left, double right, double y, std::string_view words);

private:
    Font scaled(Font font) const { return {font.sizePoints * scale_, font.bold}; }
    double width(std::string_view words, Font font) const {
        return drawing_.textWidth(words, scaled(font)) / scale_;
    }
    void setLine(const std::vector<std::string_view>& line, double left, double y, double gap);

    Drawing& drawing_;
    double scale_;
};

constexpr Font bodyFont{10, false};

void Report::setLine(const std::vector<std::string_view>& line, double left, double y, double gap) {
    for (const std::string_view word : line) {
        text(left, y, word, bodyFont, black);
        left += width(word, bodyFont) + gap;
    }
}

// Justified; gives the base line of the line after the last.
double Report::paragraph(double left, double right, double y, std::string_view words) {
    const double space = width(" ", bodyFont);
    std::vector<std::string_view> line;
    double lineWidth = 0; // without the gaps
    while (!words.empty()) {
        const size_t end = std::min(words.find(' '), words.size());
        const std::string_view word = words.substr(0, end);
        words.remove_prefix(std::min(end + 1, words.size()));
        const double wordWidth = width(word, bodyFont);
        const auto gaps = static_cast<double>(line.size());
        if (!line.empty() && lineWidth + gaps * space + wordWidth > right - left) {
            setLine(line, left, y, (right - left - lineWidth) / std::max(gaps - 1, 1.0));
            line.clear();
            lineWidth = 0;
            y += lineHeight;
        }
        line.push_back(word);
        lineWidth += wordWidth;
    }
    setLine(line, left, y, space);
    return y + lineHeight;
}

void letterhead(Report& report) {
    report.box(leftMargin, 16, 9, 9, blue);
    report.box(leftMargin + 2, 18, 7, 7, lightBlue);
    report.box(leftMargin + 4, 20, 5, 5, orange);
    report.text(leftMargin + 13, 20.2, "Northgate Paper Works", {13, true}, black);
    report.text(leftMargin + 13, 25, "Mill Lane 14, Harbour District", {8.5, false}, softBlack);
    report.textRight(rightMargin, 20.2, "Report 2031/07", {9, false}, softBlack);
    report.textRight(rightMargin, 25, "14 October", {9, false}, softBlack);
    report.box(leftMargin, 29, rightMargin - leftMargin, 0.35, rule);
}

double opening(Report& report) {
    report.text(leftMargin, 42, "Quarterly Summary of Deliveries", {19, true}, black);
    report.text(leftMargin, 49, "Prepared for the autumn meeting of all depots", {11, false}, blue);
    double y = report.paragraph(
        leftMargin,
        rightMargin,
        58,
        "The third quarter closed with more sheets delivered than any quarter before it. Office "
        "grades grew in every district, while the heavy card for book covers stayed where it was "
        "in spring. Two new routes along the river took the load off the northern depot, and "
        "fewer than three in a thousand parcels came back damaged, most of them from one rainy "
        "week in August.");
    return report.paragraph(
        leftMargin,
        rightMargin,
        y + 2,
        "This summary shows the deliveries by month, the stock of the four depots on the last day "
        "of September, and what we propose to change before the winter. Figures are in thousands "
        "of sheets unless the heading says otherwise.");
}

void chart(Report& report, double top) {
    constexpr std::array<std::string_view, 6> months{"Apr", "May", "Jun", "Jul", "Aug", "Sep"};
    constexpr std::array<double, 6> office{31, 34, 33, 40, 37, 46};
    constexpr std::array<double, 6> card{18, 17, 19, 18, 16, 19};
    constexpr double left = leftMargin + 9, width = 66, height = 40;
    const double bottom = top + height;
    for (int grid = 0; grid <= 5; ++grid) {
        const double y = bottom - grid * 8;
        report.box(left, y, width, grid == 0 ? 0.35 : 0.15, rule);
        report.textRight(left - 1.6, y + 1, std::to_string(grid * 10), {7.5, false}, softBlack);
    }
    for (size_t month = 0; month < months.size(); ++month) {
        const double x = left + 2.2 + static_cast<double>(month) * 10.8;
        report.box(x, bottom - office[month] * 0.8, 3.6, office[month] * 0.8, blue);
        report.box(x + 3.9, bottom - card[month] * 0.8, 3.6, card[month] * 0.8, orange);
        report.textCentred(x + 3.7, bottom + 4, months[month], {7.5, false}, softBlack);
    }
    report.box(left, bottom + 6.6, 2.6, 2.6, blue);
    report.text(left + 4, bottom + 9, "Office paper", {7.5, false}, softBlack);
    report.box(left + 30, bottom + 6.6, 2.6, 2.6, orange);
    report.text(left + 34, bottom + 9, "Cover card", {7.5, false}, softBlack);
}

double figures(Report& report, double y) {
    report.text(leftMargin, y, "1. Deliveries by month", {12.5, true}, black);
    chart(report, y + 6);
    report.photograph(112, y + 5, rightMargin - 112, 43);
    report.text(112, y + 53, "The river route above the second lock", {8, false}, softBlack);
    return y + 66;
}

double table(Report& report, double y) {
    constexpr std::array<std::array<std::string_view, 5>, 6> cells{{
        {"Depot", "Office", "Card", "Envelopes", "Change"},
        {"North", "1,204", "318", "96", "+4.1 %"},
        {"River", "2,871", "402", "154", "+11.6 %"},
        {"Old Town", "986", "275", "210", "-1.8 %"},
        {"Harbour", "1,530", "611", "88", "+2.3 %"},
        {"Total", "6,591", "1,606", "548", "+5.2 %"},
    }};
    constexpr std::array<double, 5> columns{leftMargin + 2, 90, 118, 150, rightMargin - 2};
    constexpr double rowHeight = 6.4;
    report.text(leftMargin, y, "2. Stock on 30 September", {12.5, true}, black);
    y += 3.5;
    const double width = rightMargin - leftMargin;
    report.box(leftMargin, y, width, rowHeight, shade);
    for (size_t row = 0; row < cells.size(); ++row) {
        const double top = y + static_cast<double>(row) * rowHeight;
        const Font font{9.5, row == 0 || row + 1 == cells.size()};
        const bool strong = row <= 1 || row + 1 == cells.size();
        report.box(leftMargin, top, width, strong ? 0.3 : 0.12, strong ? softBlack : rule);
        report.text(columns[0], top + 4.5, cells[row][0], font, black);
        for (size_t column = 1; column < columns.size(); ++column)
            report.textRight(columns[column], top + 4.5, cells[row][column], font, black);
    }
    const double end = y + rowHeight * static_cast<double>(cells.size());
    report.box(leftMargin, end, width, 0.3, softBlack);
    return end + 10;
}

double closing(Report& report, double y) {
    report.text(leftMargin, y, "3. What we propose", {12.5, true}, black);
    y = report.paragraph(
        leftMargin,
        rightMargin,
        y + 7,
        "The northern depot keeps its second van until the new gate is open. Envelopes move to Old "
        "Town, where there is room for a dry store, and the two smaller depots order their card "
        "together every second Monday. We expect this to shorten the average way of a parcel from "
        "41 to 35 kilometres, and ask the meeting to agree by the end of the month.");
    return y;
}

void signature(Report& report, double y) {
    const double x = leftMargin + 2;
    report.line(smoothStroke({{x, y + 9},
                              {x + 4, y + 1},
                              {x + 6, y},
                              {x + 6.5, y + 5},
                              {x + 4.5, y + 10},
                              {x + 8, y + 6},
                              {x + 11, y + 5},
                              {x + 11, y + 8},
                              {x + 14, y + 5},
                              {x + 16, y + 8},
                              {x + 19, y + 2},
                              {x + 20, y},
                              {x + 19, y + 8},
                              {x + 23, y + 6},
                              {x + 25, y + 8},
                              {x + 29, y + 5},
                              {x + 38, y + 6.5}}),
                0.45,
                penBlue);
    report.box(leftMargin, y + 12, 52, 0.2, rule);
    report.text(leftMargin, y + 16, "A. Lindqvist, head of deliveries", {8, false}, softBlack);
}

} // namespace

Drawing makeDocument(double widthMillimetres, double dpi) {
    Drawing drawing(dpi);
    Report report(drawing, widthMillimetres / 210);
    letterhead(report);
    double y = opening(report);
    y = figures(report, y + 6);
    y = table(report, y + 4);
    y = closing(report, y);
    signature(report, y + 3);
    return drawing;
}

void addPageNumber(Drawing& drawing,
                   double widthMillimetres,
                   double heightMillimetres,
                   int pageNumber,
                   int pageCount) {
    const double scale = widthMillimetres / 210;
    Report report(drawing, scale);
    const double bottom = heightMillimetres / scale;
    report.box(leftMargin, bottom - 18, rightMargin - leftMargin, 0.2, rule);
    report.text(leftMargin, bottom - 13, "Northgate Paper Works", {8, false}, softBlack);
    const std::string number =
        "Page " + std::to_string(pageNumber) + " of " + std::to_string(pageCount);
    report.textRight(rightMargin, bottom - 13, number, {9, true}, black);
}

} // namespace paperline::sources
