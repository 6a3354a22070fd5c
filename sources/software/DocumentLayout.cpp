#include "sources/software/DocumentLayout.h"

#include "sources/framework/LocaleFreeText.h"

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
constexpr Font bodyFont{10, false};
constexpr Font chartFont{7.5, false};

// Justified except for the last line; returns the base line of the line after it.
double paragraph(Drawing& page, double y, std::string_view words) {
    const double space = Drawing::textWidth(" ", bodyFont);
    std::vector<std::string_view> line;
    double lineWidth = 0; // without the gaps
    const auto setLine = [&](double gap) {
        double x = leftMargin;
        for (const std::string_view word : line) {
            page.text(x, y, word, bodyFont, black);
            x += Drawing::textWidth(word, bodyFont) + gap;
        }
        line.clear();
        lineWidth = 0;
        y += lineHeight;
    };
    while (!words.empty()) {
        const std::string_view word = takePart(words, ' ');
        const double wordWidth = Drawing::textWidth(word, bodyFont);
        const auto gaps = static_cast<double>(line.size());
        const double room = rightMargin - leftMargin - lineWidth;
        if (!line.empty() && gaps * space + wordWidth > room)
            setLine(room / std::max(gaps - 1, 1.0));
        line.push_back(word);
        lineWidth += wordWidth;
    }
    setLine(space);
    return y;
}

void letterhead(Drawing& page) {
    page.rectangle(leftMargin, 16, 9, 9, blue);
    page.rectangle(leftMargin + 2, 18, 7, 7, lightBlue);
    page.rectangle(leftMargin + 4, 20, 5, 5, orange);
    page.text(leftMargin + 13, 20.2, "Northgate Paper Works", {13, true}, black);
    page.text(leftMargin + 13, 25, "Mill Lane 14, Harbour District", {8.5, false}, softBlack);
    page.text(rightMargin, 20.2, "Report 2031/07", {9, false}, softBlack, Align::right);
    page.text(rightMargin, 25, "14 October", {9, false}, softBlack, Align::right);
    page.rectangle(leftMargin, 29, rightMargin - leftMargin, 0.35, rule);
}

double opening(Drawing& page) {
    page.text(leftMargin, 42, "Quarterly Summary of Deliveries", {19, true}, black);
    page.text(leftMargin, 49, "Prepared for the autumn meeting of all depots", {11, false}, blue);
    double y = paragraph(
        page,
        58,
        "The third quarter closed with more sheets delivered than any quarter before it. Office "
        "grades grew in every district, while the heavy card for book covers stayed where it was "
        "in spring. Two new routes along the river took the load off the northern depot, and "
        "fewer than three in a thousand parcels came back damaged, most of them from one rainy "
        "week in August.");
    return paragraph(
        page,
        y + 2,
        "This summary shows the deliveries by month, the stock of the four depots on the last day "
        "of September, and what we propose to change before the winter. Figures are in thousands "
        "of sheets unless the heading says otherwise.");
}

void chart(Drawing& page, double top) {
    constexpr std::array<std::string_view, 6> months{"Apr", "May", "Jun", "Jul", "Aug", "Sep"};
    constexpr std::array<double, 6> office{31, 34, 33, 40, 37, 46};
    constexpr std::array<double, 6> card{18, 17, 19, 18, 16, 19};
    constexpr double left = leftMargin + 9, width = 66, height = 40;
    const double bottom = top + height;
    for (int grid = 0; grid <= 5; ++grid) {
        const double y = bottom - grid * 8;
        page.rectangle(left, y, width, grid == 0 ? 0.35 : 0.15, rule);
        page.text(left - 1.6, y + 1, std::to_string(grid * 10), chartFont, softBlack, Align::right);
    }
    for (size_t month = 0; month < months.size(); ++month) {
        const double x = left + 2.2 + static_cast<double>(month) * 10.8;
        page.rectangle(x, bottom - office[month] * 0.8, 3.6, office[month] * 0.8, blue);
        page.rectangle(x + 3.9, bottom - card[month] * 0.8, 3.6, card[month] * 0.8, orange);
        page.text(x + 3.7, bottom + 4, months[month], chartFont, softBlack, Align::centre);
    }
    page.rectangle(left, bottom + 6.6, 2.6, 2.6, blue);
    page.text(left + 4, bottom + 9, "Office paper", chartFont, softBlack);
    page.rectangle(left + 30, bottom + 6.6, 2.6, 2.6, orange);
    page.text(left + 34, bottom + 9, "Cover card", chartFont, softBlack);
}

double figures(Drawing& page, double y) {
    page.text(leftMargin, y, "1. Deliveries by month", {12.5, true}, black);
    chart(page, y + 6);
    page.photograph(112, y + 5, rightMargin - 112, 43);
    page.text(112, y + 53, "The river route above the second lock", {8, false}, softBlack);
    return y + 66;
}

double table(Drawing& page, double y) {
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
    page.text(leftMargin, y, "2. Stock on 30 September", {12.5, true}, black);
    y += 3.5;
    const double width = rightMargin - leftMargin;
    page.rectangle(leftMargin, y, width, rowHeight, shade);
    for (size_t row = 0; row < cells.size(); ++row) {
        const double top = y + static_cast<double>(row) * rowHeight;
        const Font font{9.5, row == 0 || row + 1 == cells.size()};
        const bool strong = row <= 1 || row + 1 == cells.size();
        page.rectangle(leftMargin, top, width, strong ? 0.3 : 0.12, strong ? softBlack : rule);
        page.text(columns[0], top + 4.5, cells[row][0], font, black);
        for (size_t column = 1; column < columns.size(); ++column)
            page.text(columns[column], top + 4.5, cells[row][column], font, black, Align::right);
    }
    const double end = y + rowHeight * static_cast<double>(cells.size());
    page.rectangle(leftMargin, end, width, 0.3, softBlack);
    return end + 10;
}

double closing(Drawing& page, double y) {
    page.text(leftMargin, y, "3. What we propose", {12.5, true}, black);
    y = paragraph(
        page,
        y + 7,
        "The northern depot keeps its second van until the new gate is open. Envelopes move to Old "
        "Town, where there is room for a dry store, and the two smaller depots order their card "
        "together every second Monday. We expect this to shorten the average way of a parcel from "
        "41 to 35 kilometres, and ask the meeting to agree by the end of the month.");
    return y;
}

void signature(Drawing& page, double y) {
    const double x = leftMargin + 2;
    page.line(smoothStroke({{x, y + 9},
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
    page.rectangle(leftMargin, y + 12, 52, 0.2, rule);
    page.text(leftMargin, y + 16, "A. Lindqvist, head of deliveries", {8, false}, softBlack);
}

} // namespace

Drawing drawReport(double dpi) {
    Drawing page(dpi);
    letterhead(page);
    double y = opening(page);
    y = figures(page, y + 6);
    y = table(page, y + 4);
    y = closing(page, y);
    signature(page, y + 3);
    return page;
}

void addFooter(Drawing& page, double bottom, int pageNumber, int pageCount) {
    page.rectangle(leftMargin, bottom - 18, rightMargin - leftMargin, 0.2, rule);
    page.text(leftMargin, bottom - 13, "Northgate Paper Works", {8, false}, softBlack);
    const std::string number =
        "Page " + std::to_string(pageNumber) + " of " + std::to_string(pageCount);
    page.text(rightMargin, bottom - 13, number, {9, true}, black, Align::right);
}

} // namespace paperline::sources
