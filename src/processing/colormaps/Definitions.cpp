#include "processing/colormaps/Definitions.h"

#include "processing/colormaps/ListedColors.h"

#include <cmath>
#include <cstdlib>
#include <string>

namespace VX3::ColorMaps {
namespace {

struct Point {
    double x;
    double y;
};

// A polyline through points of ascending x from 0 to 1.
Channel Line(std::vector<Point> points) {
    return [points = std::move(points)](double x) {
        std::size_t i = 1;
        while (i + 1 < points.size() && points[i].x < x)
            ++i;
        const Point& a = points[i - 1];
        const Point& b = points[i];
        return a.y + (b.y - a.y) * (x - a.x) / (b.x - a.x);
    };
}

// A polyline whose points are evenly spaced.
Channel Even(const std::vector<double>& values) {
    std::vector<Point> points;
    for (std::size_t i = 0; i < values.size(); ++i)
        points.push_back({static_cast<double>(i) / static_cast<double>(values.size() - 1), values[i]});
    return Line(std::move(points));
}

Definition Listed(const char* name, const std::string& text) {
    std::array<std::vector<double>, 3> values;
    for (std::size_t i = 0; 4 * i < text.size(); ++i)
        values[i % 3].push_back(std::strtol(text.substr(4 * i, 4).c_str(), nullptr, 16) / 65535.0);
    return {name, {Even(values[0]), Even(values[1]), Even(values[2])}};
}

// Start 0.5, -1.5 rotations, hue 1, gamma 1.
Channel Helix(double cosine, double sine) {
    return [cosine, sine](double x) {
        const double angle = 2 * M_PI * (0.5 / 3 - 1.5 * x);
        return x + x * (1 - x) / 2 * (cosine * std::cos(angle) + sine * std::sin(angle));
    };
}

Channel Slope(double factor, double offset) {
    return [factor, offset](double x) { return factor * x + offset; };
}

double Gnuplot2Blue(double x) {
    if (x < 0.25)
        return 4 * x;
    return x < 0.92 ? -2 * x + 1.84 : x / 0.08 - 11.5;
}

Definition CmrMap() {
    return {"CMRmap",
            {Even({0.0, 0.15, 0.3, 0.6, 1.0, 0.9, 0.9, 0.9, 1.0}),
             Even({0.0, 0.15, 0.15, 0.2, 0.25, 0.5, 0.75, 0.9, 1.0}),
             Even({0.0, 0.5, 0.75, 0.5, 0.15, 0.0, 0.1, 0.5, 1.0})}};
}

Definition GistEarth() {
    return {
        "gist_earth",
        {Line({{0, 0},
               {.2824, .1882},
               {.4588, .2714},
               {.549, .4719},
               {.698, .7176},
               {.7882, .7553},
               {1, .9922}}),
         Line({{0, 0},         {.0275, 0},     {.1098, .1893}, {.1647, .3035}, {.2078, .3841}, {.2824, .502},
               {.5216, .6397}, {.698, .7171},  {.7882, .6392}, {.7922, .6413}, {.8, .6447},    {.8078, .6481},
               {.8157, .6549}, {.8667, .6991}, {.8745, .7103}, {.8824, .7216}, {.8902, .7323}, {.898, .743},
               {.9412, .8275}, {.9569, .8635}, {.9647, .8816}, {.9961, .9733}, {1, .9843}}),
         Line({{0, 0},
               {.0039, .1684},
               {.0078, .2212},
               {.0275, .4329},
               {.0314, .4549},
               {.2824, .5004},
               {.4667, .2748},
               {.5451, .3205},
               {.7843, .3961},
               {.8941, .6651},
               {1, .9843}})}};
}

Definition NipySpectral() {
    return {
        "nipy_spectral",
        {Even({0, .4667, .5333, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, .7333, .9333, 1, 1, 1, .8667, .8, .8}),
         Even({0, 0, 0, 0, 0, .4667, .6, .6667, .6667, .6, .7333, .8667, 1, 1, .9333, .8, .6, 0, 0, 0, .8}),
         Even(
             {0, .5333, .6, .6667, .8667, .8667, .8667, .6667, .5333, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, .8})}};
}

Definition Hot() {
    return {"hot",
            {Line({{0, .0416}, {.365079, 1}, {1, 1}}), Line({{0, 0}, {.365079, 0}, {.746032, 1}, {1, 1}}),
             Line({{0, 0}, {.746032, 0}, {1, 1}})}};
}

Definition Jet() {
    return {"jet",
            {Line({{0, 0}, {.35, 0}, {.66, 1}, {.89, 1}, {1, .5}}),
             Line({{0, 0}, {.125, 0}, {.375, 1}, {.64, 1}, {.91, 0}, {1, 0}}),
             Line({{0, .5}, {.11, 1}, {.34, 1}, {.65, 0}, {1, 0}})}};
}

} // namespace

std::vector<Definition> Definitions() {
    return {
        CmrMap(),
        {"cubehelix", {Helix(-0.14861, 1.78277), Helix(-0.29227, -0.90649), Helix(1.97294, 0.0)}},
        GistEarth(),
        {"gist_heat", {Slope(1.5, 0), Slope(2, -1), Slope(4, -3)}},
        {"gnuplot2", {Slope(1 / 0.32, -0.78125), Slope(2, -0.84), Gnuplot2Blue}},
        Hot(),
        Jet(),
        Listed("magma", ListedMagma),
        NipySpectral(),
        Listed("plasma", ListedPlasma),
        Listed("viridis", ListedViridis),
    };
}

} // namespace VX3::ColorMaps
