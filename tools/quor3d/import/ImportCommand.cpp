// SPDX-License-Identifier: MIT
#include "ImportCommand.h"

#include "ImportReport.h"
#include "QUORFilePublisher.h"
#include "QUORFolderEvents.h"
#include "QUORImportBatch.h"
#include "QUORImportWatch.h"
#include "QUORReaderProcess.h"

#include <CLI/CLI.hpp>

#include <QDir>

namespace {

/// While something is being waited for, and otherwise, whatever the system says of the folder.
constexpr std::chrono::milliseconds NOW{0};
constexpr std::chrono::milliseconds SOON{1000};
constexpr std::chrono::milliseconds CHECK{60000};
/// Of files given by name: values of pieces that wait for the rest of their volume, bytes.
constexpr std::size_t HELD_VALUES = std::size_t(64) << 20;

QString toText(const std::string& text) {
    return QString::fromLocal8Bit(text.c_str());
}

[[noreturn]] void refuse(const char* option, const std::string& reason) {
    throw CLI::ValidationError(option, reason);
}

/// Numbers between separators, as many as asked for.
template <std::size_t N>
std::array<double, N> numbers(const char* option, const std::string& text, QChar separator) {
    const QStringList parts = toText(text).split(separator);
    std::array<double, N> values{};
    bool good = parts.size() == qsizetype(N);
    for (std::size_t i = 0; good && i < N; ++i) {
        values[i] = parts[qsizetype(i)].toDouble(&good);
        good = good && values[i] > 0.0 && values[i] < 1e9;
    }
    if (!good) {
        refuse(option, "\"" + text + "\" is not " + std::to_string(N) + " positive numbers with \"" +
                           char(separator.toLatin1()) + "\" between them");
    }
    return values;
}

using Names = std::vector<std::string>;

std::string listOf(const Names& names) {
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return list;
}

double kilometres(const char* option, double value) {
    if (!(value > 0.0 && value <= 2000.0)) {
        refuse(option, "is more than 0 and at most 2000 km");
    }
    return value * 1000.0;
}

Names withNone(Names names) {
    names.emplace_back("none");
    return names;
}

/// The letters of the 3D products.
Names quantityNames() {
    Names names;
    for (const QUORRadarQuantity quantity : QUORRadarQuantities::ALL) {
        names.emplace_back(1, QUORRadarQuantities::letter(quantity));
    }
    return names;
}

Names flatNames() {
    Names names;
    for (const QString& name : QUORImportOptions::allFlat()) {
        names.push_back(name.toStdString());
    }
    return names;
}

Names relationNames() {
    Names names;
    for (const QUORRainRelation& relation : QUORRainRelation::getAll()) {
        names.emplace_back(relation.name);
    }
    return names;
}

} // namespace

std::string ImportCommand::summary() const {
    return "Make products of radar data in ODIM_H5, CfRadial, gridded netCDF or NEXRAD Level II";
}

std::string ImportCommand::examples() const {
    return "  quor3d import KLBB20160601_150025_V06 -o /data/products\n"
           "  quor3d import --dry-run *.h5 -o /data/products       what is in them, and what would be "
           "written\n"
           "  quor3d import volume.h5 -o out --grid 240x240x24 --spacing 2000,2000,500\n"
           "  quor3d import sweep_*.nc -o out --range 60 --height 10 --quantity Z,V\n"
           "  quor3d import --watch /data/incoming -o /data/products";
}

void ImportCommand::addOptions(CLI::App& app) {
    app.add_option("FILE", _files, "Files of radar data; the format is recognised by the content");
    app.add_option("-o,--output", _output, "3D products go to DIR/3d, 2D products to DIR/2d")
        ->type_name("DIR");
    app.add_option("--out3d", _output3d, "Folder of the 3D products instead")->type_name("DIR");
    app.add_option("--out2d", _output2d, "Folder of the 2D products instead")->type_name("DIR");
    addGridOptions(app);
    addProductOptions(app);
    app.add_option("--join", _join,
                   "Sweeps of one radar in files of their own are one volume within so many seconds")
        ->check(CLI::Range(0, 7200))
        ->capture_default_str();
    auto* const watch =
        app.add_option("--watch", _watched, "Follow this folder and import what arrives, until ended")
            ->type_name("DIR")
            ->excludes("FILE");
    app.add_option("--quiet", _quiet,
                   "With --watch: a volume of single sweeps is complete after so many seconds")
        ->check(CLI::Range(0, 7200))
        ->needs(watch)
        ->capture_default_str();
    app.add_option("--record", _record,
                   "With --watch: what has been imported; DIR/.quor3d-import of -o unless set")
        ->needs(watch)
        ->type_name("FILE");
    app.add_flag("--existing", _existing, "With --watch: also import what is there at the very first start")
        ->needs(watch);
    app.add_flag("--dry-run", _dryRun, "Say what the files hold and what would be written; write nothing")
        ->excludes(watch);
    app.add_flag("--json", _json, "One JSON object a line for each volume and each file that failed");
}

void ImportCommand::addGridOptions(CLI::App& app) {
    app.add_option_function<std::string>(
           "--grid",
           [this](const std::string& text) {
               const auto points = numbers<3>("--grid", text, QLatin1Char('x'));
               QUORGridShape shape;
               shape.steps = {1000.0, 1000.0, 1000.0};
               for (std::size_t axis = 0; axis < 3; ++axis) {
                   shape.points[axis] = int(points[axis]);
                   if (points[axis] != shape.points[axis]) {
                       refuse("--grid", "\"" + text + "\" is not whole numbers");
                   }
               }
               if (const char* reason = shape.error(); *reason != '\0') {
                   refuse("--grid", reason);
               }
               _options.grid.points = shape.points;
           },
           "Points east, north and up, such as 240x240x24")
        ->type_name("XxYxZ");
    app.add_option_function<std::string>(
           "--spacing",
           [this](const std::string& text) {
               _options.grid.steps = numbers<3>("--spacing", text, QLatin1Char(','));
           },
           "Steps of the grid in metres, such as 2000,2000,500")
        ->type_name("X,Y,Z");
    app.add_option_function<double>(
           "--range", [this](double value) { _options.grid.range = kilometres("--range", value); },
           "From the radar to each side of the grid, km")
        ->type_name("KM");
    app.add_option_function<double>(
           "--height", [this](double value) { _options.grid.height = kilometres("--height", value); },
           "From the antenna to the top of the grid, km")
        ->type_name("KM");
    app.add_option_function<std::string>(
           "--between",
           [this](const std::string& text) {
               _options.between = text == "power" ? QUORBetweenBeams::Power : QUORBetweenBeams::Decibel;
           },
           "Between two beams reflectivity is linear in dBZ, or in power")
        ->check(CLI::IsMember({"dbz", "power"}))
        ->type_name("dbz|power");
}

void ImportCommand::addProductOptions(CLI::App& app) {
    app.add_option_function<std::vector<std::string>>(
           "--quantity",
           [this](const std::vector<std::string>& letters) {
               _options.quantities.clear();
               for (const std::string& letter : letters) {
                   _options.quantities.insert(*QUORRadarQuantities::fromLetter(QLatin1Char(letter[0])));
               }
           },
           "3D products to write: " + listOf(quantityNames()) + "; all that the data give unless set")
        ->delimiter(',')
        ->check(CLI::IsMember(quantityNames()))
        ->type_name("LIST");
    app.add_option_function<std::vector<std::string>>(
           "--flat",
           [this](const std::vector<std::string>& names) {
               _options.flat.clear();
               for (const std::string& name : names) {
                   _options.flat.append(toText(name));
               }
           },
           "2D products to write: " + listOf(flatNames()) + ", or none; all unless set")
        ->delimiter(',')
        ->check(CLI::IsMember(withNone(flatNames())))
        ->type_name("LIST");
    app.add_option_function<std::string>(
           "--site", [this](const std::string& text) { _options.site = toText(text); },
           "Name of the site in place of the file's")
        ->type_name("NAME");
    app.add_option("--bytes", _options.itemSize, "Bytes of an element: 1 or 2; rain rates always have 2")
        ->check(CLI::IsMember({1, 2}))
        ->capture_default_str();
    app.add_option_function<std::string>(
           "--rain",
           [this](const std::string& text) {
               const auto relation = QUORRainRelation::find(toText(text));
               if (!relation) {
                   refuse("--rain", "one of " + listOf(relationNames()));
               }
               _options.rain = *relation;
           },
           "Relation of reflectivity and rain rate: " + listOf(relationNames()))
        ->type_name("NAME");
    app.add_option_function<double>(
           "--rain-height",
           [this](double value) { _options.rainHeight = kilometres("--rain-height", value); },
           "Height of SRI over the antenna, km (1)")
        ->type_name("KM");
}

ExitStatus ImportCommand::run() {
    const bool hasPlace = !_output.empty() || (!_output3d.empty() && !_output2d.empty());
    if (!hasPlace && (!_dryRun || !_watched.empty())) {
        std::cerr << "quor3d import: -o DIR, or --out3d DIR and --out2d DIR, say where the products go\n";
        return ExitStatus::WrongUse;
    }
    if (_files.empty() && _watched.empty()) {
        std::cerr << "quor3d import: no FILE, and no --watch DIR\n";
        return ExitStatus::WrongUse;
    }
    const QString output = toText(_output.empty() ? "." : _output);
    _options.folder3d = _output3d.empty() ? output + QStringLiteral("/3d") : toText(_output3d);
    _options.folder2d = _output2d.empty() ? output + QStringLiteral("/2d") : toText(_output2d);
    if (!_watched.empty() && _record.empty()) {
        _record = (_output.empty() ? _output3d : _output) + "/.quor3d-import";
    }
    return _watched.empty() ? importFiles() : watchFolder();
}

ExitStatus ImportCommand::watchFolder() {
    ImportReport report(_json, _dryRun);
    QUORImporter importer(_options);
    const QString folder = QDir(toText(_watched)).absolutePath();
    for (const QString& products : {_options.folder2d, _options.folder3d}) {
        QUORFilePublisher::removeLeftovers(products);
    }
    QUORFolderEvents events(folder);
    QUORImportWatch watch(
        folder, toText(_record), _join, {.quiet = std::chrono::seconds(_quiet)},
        [&](const QUORRadarData& data, const QStringList& files) {
            report.volume(files, data, _dryRun ? importer.plan(data) : importer.import(data));
        },
        [&](const QStringList& files, const QString& reason) { report.failure(files, reason); });
    if (_existing) {
        watch.takeExisting();
    }
    QSet<QString> closed;
    while (!events.isStopped()) {
        watch.look(closed);
        closed = events.wait(watch.hasMore() ? NOW : (watch.isWaiting() ? SOON : CHECK));
    }
    return ExitStatus::Success;
}

ExitStatus ImportCommand::importFiles() {
    ImportReport report(_json, _dryRun);
    QUORImporter importer(_options);
    const QUORReaderProcess reader;
    QStringList files;
    for (const std::string& name : _files) {
        files.append(toText(name));
    }
    QUORImportBatch batch(
        _join, HELD_VALUES, [&](const QString& file) { return reader.read(file); },
        [&](const QUORRadarData& data, const QStringList& from) {
            report.volume(from, data, _dryRun ? importer.plan(data) : importer.import(data));
        },
        [&](const QStringList& from, const QString& reason) { report.failure(from, reason); },
        [&](int done) { report.progress(done, int(files.size())); });
    batch.run(files);
    return report.hasFailed() ? ExitStatus::Found : ExitStatus::Success;
}
