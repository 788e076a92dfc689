// SPDX-License-Identifier: MIT
#include "SampleOptions.h"

#include <QCommandLineParser>

#include <cmath>

namespace {

constexpr int MOST_STEPS = 10000;
constexpr int MOST_POINTS = 2000;
constexpr double MOST_CELLS = 16e6;
constexpr int LONGEST_SITE = 16;

const QString HELP = QStringLiteral("help");
const QString OUTPUT = QStringLiteral("output");
const QString SITE = QStringLiteral("site");
const QString LOCATION = QStringLiteral("location");
const QString TIME = QStringLiteral("time");
const QString STEPS = QStringLiteral("steps");
const QString GRID = QStringLiteral("grid");
const QString SPACING = QStringLiteral("spacing");
const QString SEED = QStringLiteral("seed");

struct CommandRow {
    const char* name;
    SampleOptions::Command command;
};
constexpr CommandRow COMMANDS[] = {{"products", SampleOptions::Command::Products},
                                   {"terrain", SampleOptions::Command::Terrain},
                                   {"landmarks", SampleOptions::Command::Landmarks}};

void describe(QCommandLineParser& parser) {
    parser.setApplicationDescription(QStringLiteral(
        "Writes what radar software would write, of a made-up storm: product files below DIR/3d, "
        "DIR/3d_2byte\n"
        "(the two-byte forms of the same products) and DIR/2d, elevation tiles, or a landmarks file."));
    parser.addPositionalArgument(QStringLiteral("command"),
                                 QStringLiteral("products (the default), terrain or landmarks"),
                                 QStringLiteral("[command]"));
    const auto add = [&](const QString& name, const char* text, const char* value, const char* standard) {
        parser.addOption(
            {name, QString::fromLatin1(text), QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    parser.addOption({{QStringLiteral("h"), HELP}, QStringLiteral("display this help and exit")});
    add(OUTPUT, "folder to write to, made where it is missing (default: the current one)", "dir", ".");
    add(SITE, "name of the radar site, at most 16 characters (default: SAMPLE)", "name", "SAMPLE");
    add(LOCATION, "degrees of the site (default: 42.0,1.5)", "lat,lon", "42.0,1.5");
    add(TIME, "UTC time of the first step as 2026-05-11T20:30:00 (default: now)", "time", "");
    add(STEPS, "number of time steps, 300 s apart (default: 1)", "count", "1");
    add(GRID, "points along x, y and z (default: 240x240x24)", "XxYxZ", "240x240x24");
    add(SPACING, "kilometres between the points, horizontally and vertically (default: 2,0.5)", "km,km",
        "2,0.5");
    add(SEED, "number that picks the storm (default: 1)", "number", "1");
}

/// The text's numbers between separators, or none when one of them is not a number.
std::vector<double> numbers(const QString& text, QLatin1Char separator) {
    std::vector<double> result;
    for (const QString& part : text.split(separator)) {
        bool good = false;
        const double number = part.trimmed().toDouble(&good);
        if (!good || !std::isfinite(number)) {
            return {};
        }
        result.push_back(number);
    }
    return result;
}

bool between(double value, double low, double high) {
    return value >= low && value <= high;
}

bool readSite(const QString& text, SampleProduct& frame) {
    frame.site = text.toLatin1();
    return !text.trimmed().isEmpty() && text.size() <= LONGEST_SITE &&
           QString::fromLatin1(frame.site) == text;
}

bool readLocation(const QString& text, SampleProduct& frame) {
    const std::vector<double> values = numbers(text, QLatin1Char(','));
    if (values.size() != 2 || !between(values[0], -90, 90) || !between(values[1], -180, 180)) {
        return false;
    }
    frame.latitude = values[0];
    frame.longitude = values[1];
    return true;
}

bool readTime(const QString& text, SampleProduct& frame) {
    frame.time = text.isEmpty() ? QDateTime::currentDateTimeUtc() : QDateTime::fromString(text, Qt::ISODate);
    if (frame.time.timeSpec() == Qt::LocalTime) {
        frame.time.setTimeSpec(Qt::UTC);
    }
    return frame.time.isValid() && between(frame.time.date().year(), 1970, 2100);
}

bool readGrid(const QString& text, SampleProduct& frame) {
    const std::vector<double> points = numbers(text, QLatin1Char('x'));
    if (points.size() != 3 || points[0] * points[1] * points[2] > MOST_CELLS) {
        return false;
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!between(points[axis], 2, MOST_POINTS) || points[axis] != std::floor(points[axis])) {
            return false;
        }
        frame.points[axis] = std::int32_t(points[axis]);
    }
    frame.radar = {frame.points[0] * 500, frame.points[1] * 500, 0};
    return true;
}

bool readSpacing(const QString& text, SampleProduct& frame) {
    const std::vector<double> steps = numbers(text, QLatin1Char(','));
    if (steps.size() != 2 || !between(steps[0], 0.01, 50) || !between(steps[1], 0.01, 5)) {
        return false;
    }
    frame.stepsCm = {std::int32_t(std::lround(steps[0] * 1e5)), std::int32_t(std::lround(steps[0] * 1e5)),
                     std::int32_t(std::lround(steps[1] * 1e5))};
    return true;
}

bool readSteps(const QString& text, SampleOptions& options) {
    bool good = false;
    options.steps = text.toInt(&good);
    return good && between(options.steps, 1, MOST_STEPS);
}

bool readSeed(const QString& text, SampleOptions& options) {
    bool good = false;
    options.seed = text.toUInt(&good);
    return good;
}

bool readCommand(const QStringList& positional, SampleOptions& options) {
    for (const CommandRow& row : COMMANDS) {
        if (positional == QStringList(QLatin1String(row.name))) {
            options.command = row.command;
            return true;
        }
    }
    return positional.isEmpty();
}

} // namespace

QString SampleOptions::helpText() {
    QCommandLineParser parser;
    describe(parser);
    return parser.helpText();
}

SampleOptions SampleOptions::parse(const QStringList& arguments) {
    SampleOptions options;
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments)) {
        options.error = parser.errorText();
        return options;
    }
    options.help = parser.isSet(HELP);
    options.output = parser.value(OUTPUT);
    const auto check = [&](bool good, const QString& name) {
        if (!good && options.error.isEmpty()) {
            options.error = QStringLiteral("Invalid value of --%1: '%2'.").arg(name, parser.value(name));
        }
    };
    check(!options.output.isEmpty(), OUTPUT);
    check(readSite(parser.value(SITE), options.frame), SITE);
    check(readLocation(parser.value(LOCATION), options.frame), LOCATION);
    check(readTime(parser.value(TIME), options.frame), TIME);
    check(readSteps(parser.value(STEPS), options), STEPS);
    check(readGrid(parser.value(GRID), options.frame), GRID);
    check(readSpacing(parser.value(SPACING), options.frame), SPACING);
    check(readSeed(parser.value(SEED), options), SEED);
    if (!readCommand(parser.positionalArguments(), options) && options.error.isEmpty()) {
        options.error =
            QStringLiteral("Unknown command: '%1'.").arg(parser.positionalArguments().join(QLatin1Char(' ')));
    }
    return options;
}
