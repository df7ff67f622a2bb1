#pragma once

#include "diagnosis/StartupRecord.h"

#include <string>
#include <vector>

namespace Orvia::Chart {

constexpr double fontSize = 11;
constexpr double plotWidth = 1100;
constexpr double minBarWidth = 2;

/// How wide the text is at most; fonts differ.
double widthOf(const std::string &text, double size = fontSize);

/// A piece of time in a row. Positions are pixels from the plot's left edge.
struct Bar
{
    std::string kind;  ///< the operation, for its colour
    std::string label; ///< short
    std::string tip;   ///< all that is known
    double x = 0;
    double width = 0;
    bool isTick = false; ///< a stage too short for a bar of its own among the others
    bool isBad = false;  ///< something other than success came of it
};

/// A text that has found its place; `level` counts the lines it had to be moved away from the others.
struct Label
{
    enum class Place
    {
        Right,  ///< from x on
        Inside, ///< in the middle of a bar that begins at x and has this width
        Left,   ///< up to x + width
    };

    std::string text;
    double x = 0;
    double width = 0;
    Place place = Place::Right;
    int level = 0;
};

struct Row
{
    std::string title;
    std::string mark;  ///< what went wrong, in a word or two
    bool isBad = true; ///< else the mark is a mere remark
    std::vector<Bar> bars;
    std::vector<Label> labels;
    int levels = 0; ///< of the labels, if they stand below the bars
};

struct Layout
{
    double start = 0; ///< microseconds at the plot's left edge
    double end = 0;
    std::vector<Row> threads; ///< phases
    std::vector<Row> modules;
    std::vector<Label> stages; ///< lines with their names, from left to right
    int stageLevels = 0;

    double xOf(std::int64_t time) const
    {
        return (static_cast<double>(time) - start) / (end - start) * plotWidth;
    }
};

Layout layOut(const StartupRecord &record, bool all);

} // namespace Orvia::Chart
