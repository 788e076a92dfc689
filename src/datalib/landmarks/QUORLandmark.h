// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"

#include <QString>

#include <memory>
#include <utility>

/// A named place that the scene labels. Immutable, shared between lists and sets.
class QUORLandmark {
public:
    using Ptr = std::shared_ptr<QUORLandmark>;
    using CPtr = std::shared_ptr<const QUORLandmark>;

    static constexpr unsigned MAX_PRIORITY = 5;

    QUORLandmark(QString label, const QUORCoordinate& location, double alt, double r, double g, double b,
                 unsigned priority)
        : _label(std::move(label)),
          _location(location),
          _alt(alt),
          _r(r),
          _g(g),
          _b(b),
          _priority(priority < MAX_PRIORITY ? priority : MAX_PRIORITY) {}
    virtual ~QUORLandmark() = default;

    QString getLabel() const { return _label; }
    QUORCoordinate getLocation() const { return _location; }
    /// Metres above the sea.
    double getAlt() const { return _alt; }
    /// Colour components as the file gives them, meant for 0 to 1.
    double getR() const { return _r; }
    double getG() const { return _g; }
    double getB() const { return _b; }
    /// 0 (largest label) to 5.
    unsigned getPriority() const { return _priority; }

private:
    QString _label;
    QUORCoordinate _location;
    double _alt;
    double _r;
    double _g;
    double _b;
    unsigned _priority;
};
