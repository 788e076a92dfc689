// SPDX-License-Identifier: MIT
#include "QUORImporter.h"

#include "QUORFlatProducts.h"
#include "QUORImportError.h"
#include "QUORProductWriter.h"
#include "QUORScanHeader.h"
#include "QUORVolumeGridder.h"

#include <algorithm>
#include <cmath>

namespace {

using Quantity = QUORRadarQuantity;

constexpr double NO_ECHO_REFLECTIVITY = -31.5; ///< the lowest that one byte holds, in both forms

enum ProductCode { Ppi = 1, Cappi = 3, Vil = 10, Max = 16, Sri = 32 };

struct FlatRow {
    const char* name;
    int product;
};
constexpr FlatRow FLAT[] = {{"MAX", Max}, {"SRI", Sri}, {"VIL", Vil}, {"PPI", Ppi}};

int typeOf(Quantity quantity, int itemSize) {
    switch (quantity) {
    case Quantity::Reflectivity:
        return itemSize == 1 ? 2 : 9;
    case Quantity::Velocity:
        return itemSize == 1 ? 3 : 10;
    case Quantity::Width:
        return itemSize == 1 ? 4 : 11;
    case Quantity::RainRate:
        break;
    }
    return 13;
}

constexpr int LIQUID_WATER_TYPE = 5;

/// Products of hours, of many radars; what is older nothing late belongs to.
constexpr std::size_t MOST_WRITTEN = 4000;

/// One product on its way: what it is, and how its values come about.
struct Item {
    QUORImportedProduct report;
    QUORProductContent content;
    std::optional<Quantity> quantity; ///< of a 3D product
};

/// The products of one volume in the making.
class Job {
public:
    Job(const QUORRadarData& data, const QUORImportOptions& options)
        : _data(data), _options(options), _gridder(data, options.grid, options.between) {
        _result.site = QUORProductWriter::siteName(options.site.isEmpty() ? data.site.name : options.site,
                                                   data.site.latitude, data.site.longitude);
        _result.shape = _gridder.getShape();
        _result.warnings = data.warnings + _gridder.getWarnings();
        addFlat();
        for (const Quantity quantity : QUORRadarQuantities::ALL) {
            if (options.quantities.count(quantity) > 0 && isAvailable(quantity)) {
                addVolume(quantity);
            }
        }
        if (_items.empty()) {
            throw QUORRequestError(QStringLiteral("nothing in it of what was asked for"));
        }
        for (const Item& item : _items) {
            _result.products.push_back(item.report);
        }
    }

    QUORImportResult plan() const { return _result; }

    /// What `isBetter` says to be made of more sweeps already is not made again.
    template <class Test>
    void keepBetter(const Test& isBetter) {
        const auto kept = std::stable_partition(_items.begin(), _items.end(), [&](const Item& item) {
            return !isBetter(item.report.path, sweepsOf(item));
        });
        const auto count = std::distance(kept, _items.end());
        _items.erase(kept, _items.end());
        if (_items.empty()) {
            throw QUORImportError(
                QStringLiteral("not written: the products of its time have been made of more sweeps"));
        }
        if (count > 0) {
            _result.warnings.append(
                QStringLiteral("%1 products of its time are left: they have been made of more sweeps")
                    .arg(count));
        }
        _result.products.clear();
        for (const Item& item : _items) {
            _result.products.push_back(item.report);
        }
    }

    /// `note` is told of each product that stands.
    template <class Note>
    QUORImportResult run(const Note& note) {
        std::vector<QByteArray> files;
        for (const Item& item : _items) {
            files.push_back(QUORProductWriter::toBytes(item.content, valuesOf(item)));
        }
        for (std::size_t i = 0; i < files.size(); ++i) {
            QUORProductWriter::publish(files[i], _items[i].report.path);
            note(_items[i].report.path, sweepsOf(_items[i]));
        }
        return _result;
    }

private:
    bool isAvailable(Quantity quantity) const {
        return _data.has(quantity) || (quantity == Quantity::RainRate && _data.has(Quantity::Reflectivity));
    }

    /// Sweeps that hold what a product is made from; of a grid none.
    std::size_t sweepsOf(const Item& item) const {
        const bool isRain = item.quantity == Quantity::RainRate || item.content.product == Sri;
        const Quantity source =
            isRain && _data.has(Quantity::RainRate)
                ? Quantity::RainRate
                : (isRain ? Quantity::Reflectivity : item.quantity.value_or(Quantity::Reflectivity));
        return std::size_t(
            std::count_if(_data.sweeps.begin(), _data.sweeps.end(),
                          [&](const QUORRadarSweep& sweep) { return sweep.find(source) != nullptr; }));
    }

    QUORProductContent frame(int product, int type) const {
        QUORProductContent content;
        content.product = product;
        content.type = type;
        content.time = _data.time;
        content.site = _result.site;
        content.latitude = _data.site.latitude;
        content.longitude = _data.site.longitude;
        const int height = int(std::lround(_data.site.altitude));
        content.radarHeight = int(std::lround(_data.site.heightOfAntenna.value_or(0.0)));
        content.groundElevation = height - content.radarHeight;
        content.shape = _result.shape;
        content.wavelength = QUORScanHeader::of(_data, Quantity::Reflectivity, false).wavelength;
        if (product != Cappi) {
            content.shape.points[2] = 1;
        }
        if (_data.grid && _data.grid->earthRadius > 0.0) {
            content.earthRadius = _data.grid->earthRadius;
            content.inverseFlattening = _data.grid->inverseFlattening;
        }
        return content;
    }

    void add(Item item, const QString& product, const QString& folder) {
        item.report.product = product;
        item.report.configuration =
            item.content.type == LIQUID_WATER_TYPE ? QString() : QString(configurationOf(item.content.type));
        item.report.path = folder + QLatin1Char('/') + QUORProductWriter::fileName(item.content);
        _items.push_back(std::move(item));
    }
    static QChar configurationOf(int type) {
        for (const Quantity quantity : QUORRadarQuantities::ALL) {
            if (type == typeOf(quantity, 1) || type == typeOf(quantity, 2)) {
                return QLatin1Char(QUORRadarQuantities::letter(quantity));
            }
        }
        return {};
    }

    QString sourceOf(Quantity quantity) const {
        if (!_data.has(quantity)) {
            return sourceOf(Quantity::Reflectivity) + QStringLiteral(", ") +
                   QLatin1String(_options.rain.name);
        }
        if (_data.grid) {
            for (const QUORRadarGrid::Field& field : _data.grid->fields) {
                if (field.quantity == quantity) {
                    return field.name;
                }
            }
        }
        for (const QUORRadarSweep& sweep : _data.sweeps) {
            if (const QUORRadarMoment* moment = sweep.find(quantity)) {
                return moment->name;
            }
        }
        return {};
    }

    void addFlat() {
        for (const FlatRow& row : FLAT) {
            const QString name = QLatin1String(row.name);
            const Quantity source = row.product == Sri ? Quantity::RainRate : Quantity::Reflectivity;
            if (!_options.flat.contains(name) || !isAvailable(source) ||
                (row.product == Ppi && !_gridder.hasSweeps())) {
                continue;
            }
            Item item;
            const int type = row.product == Sri   ? typeOf(source, 2)
                             : row.product == Vil ? LIQUID_WATER_TYPE
                                                  : typeOf(source, _options.itemSize);
            item.content = frame(row.product, type);
            item.report.source = sourceOf(source);
            add(std::move(item), name, _options.folder2d);
        }
    }

    void addVolume(Quantity quantity) {
        Item item;
        int itemSize = _options.itemSize;
        const QUORScanHeader scan = QUORScanHeader::of(_data, quantity, itemSize == 1);
        if (itemSize == 1 && !scan.isUsable()) {
            _result.warnings.append(
                QStringLiteral("%1 is written in two bytes: its Nyquist velocity or wavelength "
                               "is not known")
                    .arg(QLatin1Char(QUORRadarQuantities::letter(quantity))));
            itemSize = 2;
        }
        item.content = frame(Cappi, typeOf(quantity, itemSize));
        item.content.prf = scan.prf;
        item.content.prfMode = scan.prfMode;
        item.content.wavelength = scan.wavelength;
        if (quantity == Quantity::Reflectivity) {
            item.content.noEcho = NO_ECHO_REFLECTIVITY;
        } else if (quantity == Quantity::RainRate) {
            item.content.noEcho = 0.0;
        }
        item.quantity = quantity;
        item.report.source = sourceOf(quantity);
        add(std::move(item), QStringLiteral("CAPPI"), _options.folder3d);
    }

    /// Gridded once, used by several products.
    const std::vector<float>& reflectivity() {
        if (_reflectivity.empty()) {
            _reflectivity = _gridder.grid(Quantity::Reflectivity);
        }
        return _reflectivity;
    }
    std::vector<float> toRain(std::vector<float> reflectivity) const {
        std::transform(reflectivity.begin(), reflectivity.end(), reflectivity.begin(),
                       [this](float value) { return _options.rain.rate(value); });
        return reflectivity;
    }

    std::vector<float> valuesOf(const Item& item) {
        const QUORGridShape& shape = _result.shape;
        switch (item.content.product) {
        case Max:
            return QUORFlatProducts::maximum(shape, reflectivity());
        case Vil:
            return QUORFlatProducts::liquidWater(shape, reflectivity());
        case Ppi:
            return _gridder.projectLowest(Quantity::Reflectivity);
        case Sri:
            return _data.has(Quantity::RainRate)
                       ? _gridder.gridLevel(Quantity::RainRate, _options.rainHeight)
                       : toRain(_gridder.gridLevel(Quantity::Reflectivity, _options.rainHeight));
        default:
            break;
        }
        if (*item.quantity == Quantity::Reflectivity) {
            return reflectivity();
        }
        return _data.has(*item.quantity) ? _gridder.grid(*item.quantity) : toRain(reflectivity());
    }

    const QUORRadarData& _data;
    const QUORImportOptions& _options;
    QUORVolumeGridder _gridder;
    QUORImportResult _result;
    std::vector<Item> _items;
    std::vector<float> _reflectivity;
};

} // namespace

QStringList QUORImportOptions::allFlat() {
    QStringList names;
    for (const FlatRow& row : FLAT) {
        names.append(QLatin1String(row.name));
    }
    return names;
}

QUORImportResult QUORImporter::plan(const QUORRadarData& data) const {
    return Job(data, _options).plan();
}

QUORImportResult QUORImporter::import(const QUORRadarData& data) {
    Job job(data, _options);
    const auto find = [this](const QString& path) {
        return std::find_if(_written.begin(), _written.end(),
                            [&](const Written& written) { return written.path == path; });
    };
    job.keepBetter([&](const QString& path, std::size_t sweeps) {
        const auto found = find(path);
        return found != _written.end() && found->sweeps > sweeps;
    });
    return job.run([&](const QString& path, std::size_t sweeps) {
        if (const auto found = find(path); found != _written.end()) {
            _written.erase(found);
        }
        _written.push_back({path, sweeps});
        if (_written.size() > MOST_WRITTEN) {
            _written.pop_front();
        }
    });
}
