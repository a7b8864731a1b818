#include "bench/fleet/RatePlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace fleet {

namespace {

constexpr double width = 900, height = 320; // of the plot itself
constexpr double left = 70, top = 50;
constexpr int hours = 24;

template <class... Arguments>
void Append(std::string& text, const char* format, Arguments... arguments)
{
    char piece[256];
    std::snprintf(piece, sizeof piece, format, arguments...);
    text += piece;
}

// The distance of grid lines: 1, 2 or 5 times a power of ten, about five of them.
double ChooseStep(double most)
{
    const double power = std::pow(10, std::floor(std::log10(most / 5)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (most / (factor * power) <= 6)
            return factor * power;
    return 10 * power;
}

void DrawGrid(std::string& svg, double most)
{
    for (int hour = 0; hour <= hours; hour += 2)
        Append(svg, "<text x='%.0f' y='%.0f' text-anchor='middle'>%02d:00</text>\n",
               left + hour * width / hours, top + height + 20, hour);
    const double step = ChooseStep(most);
    for (double value = 0; value <= most; value += step)
    {
        const double y = top + height - value / most * height;
        Append(svg, "<path d='M%.0f %.1fh%.0f' stroke='#ddd'/>\n", left, y, width);
        Append(svg, "<text x='%.0f' y='%.1f' text-anchor='end'>%.0f</text>\n", left - 8, y + 4,
               value);
    }
}

void DrawCurve(std::string& svg, const Curve& curve, double most)
{
    Append(svg, "<polyline fill='none' stroke-width='1.5' stroke='%s' points='",
           curve.colour.c_str());
    const double step = width / static_cast<double>(curve.values.size());
    for (std::size_t i = 0; i < curve.values.size(); ++i)
        Append(svg, "%.1f,%.1f ", left + (static_cast<double>(i) + 0.5) * step,
               top + height - curve.values[i] / most * height);
    svg += "'/>\n";
}

} // namespace

std::string DrawDay(const std::string& title, const std::vector<Curve>& curves)
{
    double most = 1;
    for (const Curve& curve : curves)
        for (const double value : curve.values)
            most = std::max(most, value);
    std::string svg;
    Append(svg, "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %.0f %.0f' ",
           left + width + 30, top + height + 40);
    svg += "font-family='sans-serif' font-size='13' fill='#222'>\n"
           "<rect width='100%' height='100%' fill='#fff'/>\n";
    Append(svg, "<text x='%.0f' y='18' font-weight='bold'>%s</text>\n", left, title.c_str());
    DrawGrid(svg, most);
    double x = left;
    for (const Curve& curve : curves)
    {
        DrawCurve(svg, curve, most);
        Append(svg, "<text x='%.0f' y='38' fill='%s'>%s</text>\n", x, curve.colour.c_str(),
               curve.name.c_str());
        x += 30 + 7.0 * static_cast<double>(curve.name.size());
    }
    return svg + "</svg>\n";
}

} // namespace fleet
