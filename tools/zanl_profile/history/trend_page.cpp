// SPDX-License-Identifier: Apache-2.0
// All texts of runs go through page_text(): a name can neither end its element nor change the direction of
// what stands after it. Colours come from classes, since the page's policy allows no styles of elements.
#include "trend_page.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "contract.h"
#include "metric_text.h"
#include "printable.h"
#include "value_text.h"
#include "view_page.h"

namespace zan::profile {
extern const std::string_view embedded_trend_page; // of cmake/embed_text.cmake
} // namespace zan::profile

namespace zan::tool {

using namespace profile;

namespace {

constexpr double chart_width = 1000;
constexpr double chart_height = 300;
constexpr double left = 84;
constexpr double right = 24;
constexpr double top = 20;
constexpr double bottom = 34;
constexpr std::size_t most_marks = 500; // points; above, the line alone is drawn
constexpr double least_range = 0.05;    // of the median, so that labels of three digits differ

using Attributes = std::initializer_list<std::pair<std::string_view, std::string>>;

std::string page_text(const std::string& text) {
    return html_text(printable(text));
}

std::string pixels(double value) {
    return trimmed_text(value, 1);
}

std::string element(std::string_view name, const Attributes& attributes, const std::string& content = {}) {
    std::string text = "<" + std::string(name);
    for (const auto& [key, value] : attributes)
        text += " " + std::string(key) + "=\"" + value + "\"";
    return text + ">" + content + "</" + std::string(name) + ">";
}

// The limit of --fail-on as a value; nothing without one.
Value limit_of(const TrendView& view) {
    if (!view.limit || !view.statistics)
        return std::nullopt;
    const double distance = std::abs(view.statistics->median) * *view.limit / 100;
    return view.statistics->median + (view.metric->better == Better::less ? distance : -distance);
}

// 1, 2 or 5 times a power of ten: the least that is not below `least`.
double nice_step(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least)
            return factor * power;
    }
    return 10 * power;
}

class TrendChart {
  public:
    explicit TrendChart(const TrendView& view) : m_view(view) {
        m_low = m_high = points().front().value;
        for (const TrendPoint& point : points())
            include(point.value);
        const auto& found = view.statistics;
        if (found) {
            include(found->median + most_deviations * found->deviation);
            include(found->median - most_deviations * found->deviation);
        }
        if (const Value limit = limit_of(view))
            include(*limit);
        const double middle = (m_low + m_high) / 2;
        const double least = std::max(std::abs(middle) * least_range, 1e-9);
        const double half = std::max(m_high - m_low, least) * 0.55;
        m_low = middle - half;
        m_high = middle + half;
    }

    std::string svg() const {
        const std::string label =
            page_text(std::string(m_view.metric->name) + " of " + m_view.subject + ", " +
                      std::to_string(points().size()) + " runs; the values are in the table");
        return element("svg",
                       {{"viewBox", "0 0 " + pixels(chart_width) + " " + pixels(chart_height)},
                        {"role", "img"},
                        {"aria-label", label}},
                       grid() + expected() + line() + marks() + dates());
    }

  private:
    const std::vector<TrendPoint>& points() const { return m_view.line.points; }
    void include(double value) {
        m_low = std::min(m_low, value);
        m_high = std::max(m_high, value);
    }
    double y_of(double value) const {
        return top + (m_high - value) / (m_high - m_low) * (chart_height - top - bottom);
    }
    double x_of(std::size_t i) const {
        const double width = chart_width - left - right;
        return points().size() < 2
                   ? left + width / 2
                   : left + width * static_cast<double>(i) / static_cast<double>(points().size() - 1);
    }
    std::string level(const char* look, double value) const {
        const std::string y = pixels(y_of(value));
        return element("line", {{"class", look},
                                {"x1", pixels(left)},
                                {"x2", pixels(chart_width - right)},
                                {"y1", y},
                                {"y2", y}});
    }

    std::string grid() const {
        const double step = nice_step((m_high - m_low) / 5);
        std::string text;
        const double first = std::ceil(m_low / step);
        for (int i = 0; (first + i) * step <= m_high; ++i) {
            const double at = (first + i) * step;
            text += level("grid", at) +
                    element("text",
                            {{"x", pixels(left - 8)}, {"y", pixels(y_of(at) + 4)}, {"text-anchor", "end"}},
                            html_text(value_text(m_view, at)));
        }
        return text;
    }

    // The median, what is within three deviations of it, and the limit.
    std::string expected() const {
        const auto& found = m_view.statistics;
        if (!found)
            return {};
        const double reach = most_deviations * found->deviation;
        const double above = y_of(found->median + reach);
        std::string text = element("rect", {{"class", "band"},
                                            {"x", pixels(left)},
                                            {"y", pixels(above)},
                                            {"width", pixels(chart_width - left - right)},
                                            {"height", pixels(y_of(found->median - reach) - above)}});
        text += level("median", found->median);
        if (const Value limit = limit_of(m_view))
            text +=
                level("limit", *limit) +
                element("text",
                        {{"class", "limit-text"}, {"x", pixels(left + 6)}, {"y", pixels(y_of(*limit) - 5)}},
                        "limit " + html_text(value_text(m_view, *limit)));
        return text;
    }

    std::string line() const {
        std::string places;
        for (std::size_t i = 0; i < points().size(); ++i)
            places += (i == 0 ? "" : " ") + pixels(x_of(i)) + "," + pixels(y_of(points()[i].value));
        return element("polyline", {{"class", "line"}, {"points", places}});
    }

    std::string marks() const {
        std::string text;
        const std::size_t last = points().size() - 1;
        for (std::size_t i = last < most_marks ? 0 : last; i <= last; ++i) {
            const TrendPoint& point = points()[i];
            const std::string look = i < last         ? "point"
                                     : m_view.fails() ? "point newest failed"
                                                      : "point newest";
            const std::string title = page_text(point.run.date + "  " + label_text(m_view, point.run)) +
                                      "  " + html_text(value_text(m_view, point.value));
            text += element("circle",
                            {{"class", look},
                             {"cx", pixels(x_of(i))},
                             {"cy", pixels(y_of(point.value))},
                             {"r", i == last ? "5" : "3.5"}},
                            element("title", {}, title));
        }
        return text;
    }

    std::string dates() const {
        const std::string y = pixels(chart_height - 10);
        std::string first =
            element("text", {{"x", pixels(left)}, {"y", y}}, page_text(points().front().run.date));
        if (points().size() < 2)
            return first;
        return first + element("text", {{"x", pixels(chart_width - right)}, {"y", y}, {"text-anchor", "end"}},
                               page_text(points().back().run.date));
    }

    const TrendView& m_view;
    double m_low = 0;
    double m_high = 0;
};

std::string runs_table(const TrendView& view) {
    const Attributes number = {{"class", "number"}};
    std::string text = element("tr", {},
                               element("th", {}, "date") + element("th", {}, "run") +
                                   element("th", {}, page_text(view.label)) +
                                   element("th", number, html_text(view.metric->name)) +
                                   element("th", number, "against the median"));
    const auto& points = view.line.points;
    for (std::size_t i = points.size(); i-- > 0;) {
        const TrendPoint& point = points[i];
        const std::string change = view.statistics ? delta_text(view.metric->unit, view.statistics->median,
                                                                point.value, view.line.time_unit)
                                                   : "-";
        const std::string cells = element("td", {}, page_text(point.run.date)) +
                                  element("td", {{"class", "code"}}, page_text(point.run.id.substr(0, 12))) +
                                  element("td", {}, page_text(label_text(view, point.run))) +
                                  element("td", number, html_text(value_text(view, point.value))) +
                                  element("td", number, html_text(change));
        const bool is_failed = i + 1 == points.size() && view.fails();
        text += "\n" + (is_failed ? element("tr", {{"class", "failed"}}, cells) : element("tr", {}, cells));
    }
    return element("table", {}, text);
}

// Of a place of the template; nothing if it is none.
std::optional<std::string> text_of_place(const TrendView& view, std::string_view place) {
    constexpr std::string_view digest_mark = "sha256:";
    if (place == "title")
        return page_text(std::string(view.metric->name) + " of " + view.subject);
    if (place == "database")
        return page_text(view.database);
    if (place == "sentence") {
        const std::string sentence = trend_sentence(view);
        if (sentence.empty())
            return "";
        const char* const look = view.fails() ? "sentence of-cause" : "sentence";
        return element("p", {{"class", look}}, html_text(sentence));
    }
    if (place == "chart")
        return TrendChart(view).svg();
    if (place == "table")
        return runs_table(view);
    if (place.starts_with(digest_mark))
        return base64_of_hex(place.substr(digest_mark.size()));
    return std::nullopt;
}

} // namespace

// Places are names between two @; other @, as of the style, are the template's own.
std::string trend_page(const TrendView& view) {
    ZAN_CONTRACT(!view.line.points.empty(), "a trend has runs");
    std::string page;
    std::string_view rest = embedded_trend_page;
    for (std::size_t at = rest.find('@'); at != std::string_view::npos; at = rest.find('@')) {
        page += rest.substr(0, at);
        const std::size_t end = rest.find('@', at + 1);
        const auto text = end == std::string_view::npos
                              ? std::nullopt
                              : text_of_place(view, rest.substr(at + 1, end - at - 1));
        page += text.value_or("@");
        rest.remove_prefix(text ? end + 1 : at + 1);
    }
    return page += rest;
}

} // namespace zan::tool
