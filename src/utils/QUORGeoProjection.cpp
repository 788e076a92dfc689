// SPDX-License-Identifier: MIT
#include "QUORGeoProjection.h"

#include "QUORLog.h"
#include "QUORUnits.h"

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>

#include <algorithm>
#include <bit>
#include <cmath>
#include <proj.h>

namespace {

// Nearer than this the library's own origin is the reference location.
constexpr double ORIGIN_TOLERANCE = 1.0;

// The first failure of a kind is said, then the second, the fourth, the eighth and so on: a grid of
// points that all fail must not fill the disk.
class FailureCount {
public:
    bool isDue() { return std::has_single_bit(++_count); }

private:
    unsigned long long _count = 0;
};

QString listed(std::initializer_list<double> values) {
    QStringList texts;
    for (const double value : values) {
        texts.append(QString::number(value));
    }
    return texts.join(QStringLiteral(", "));
}

QString fixed(double value) {
    return QString::number(value, 'f', 6);
}

} // namespace

struct QUORGeoProjection::Handles {
    ~Handles() {
        proj_destroy(projection);
        proj_context_destroy(context);
    }

    bool transform(PJ_DIRECTION direction, PJ_COORD& point) {
        proj_errno_reset(projection);
        point = proj_trans(projection, direction, point);
        return std::isfinite(point.xyz.x) && std::isfinite(point.xyz.y);
    }
    QUORPoint3D forward(const QUORCoordinate& c);
    void centre(const QUORCoordinate& reference);
    QString errorText(int code) const {
        const char* text = code == 0 ? nullptr : proj_context_errno_string(context, code);
        return QString::number(code) + QStringLiteral(": ") +
               (text == nullptr ? QStringLiteral("no finite result") : QString::fromUtf8(text));
    }

    void logFailure(const QString& what, const QString& source) const {
        const int code = proj_errno(projection);
        QUORLog& log = QUORLog::Instance();
        log.logError(what + QString::number(code));
        log.logError(QStringLiteral("err=") + errorText(code));
        log.logError(source);
    }

    QMutex mutex;
    PJ_CONTEXT* context = nullptr;
    PJ* projection = nullptr;
    double originX = 0.0;
    double originY = 0.0;
    FailureCount notReadyForward;
    FailureCount notReadyInverse;
    FailureCount failedForward;
    FailureCount failedInverse;
};

QUORPoint3D QUORGeoProjection::Handles::forward(const QUORCoordinate& c) {
    if (projection == nullptr) {
        if (notReadyForward.isDue()) {
            QUORLog::Instance().logError(
                QStringLiteral("QUORGeoProjection::projectFromLatLon(): projection not initialized."));
        }
        return {};
    }
    PJ_COORD point = proj_coord(c.getLon() * QUORUnits::RADIANS_PER_DEGREE,
                                c.getLat() * QUORUnits::RADIANS_PER_DEGREE, 0.0, 0.0);
    if (transform(PJ_FWD, point)) {
        return {point.xyz.x - originX, point.xyz.y - originY, 0.0};
    }
    if (failedForward.isDue()) {
        logFailure(QStringLiteral("QUORGeoProjection::projectFromLatLon(): pj_transform() failed! ret="),
                   QStringLiteral("srcLatLon=(") + listed({c.getLat(), c.getLon()}) + QLatin1Char(')'));
    }
    return {};
}

// The library takes no latitude of origin for some projections.
void QUORGeoProjection::Handles::centre(const QUORCoordinate& reference) {
    const QUORPoint3D origin = forward(reference);
    if (std::hypot(origin.x, origin.y) > ORIGIN_TOLERANCE) {
        originX = origin.x;
        originY = origin.y;
    }
}

QUORGeoProjection::QUORGeoProjection(QString projection, const QUORCoordinate& reference, double earthRadius,
                                     double inverseFlattening)
    : _name(std::move(projection)),
      _reference(reference),
      _earthRadius(earthRadius),
      _inverseFlattening(inverseFlattening),
      _handles(std::make_unique<Handles>()) {
    QUORLog& log = QUORLog::Instance();
    if (_name.isEmpty() || !(std::abs(reference.getLat()) <= 90.0) || !(earthRadius > 0.0) ||
        !(inverseFlattening > 0.0)) {
        log.logDebug(QStringLiteral("QUORGeoProjection::QUORGeoProjection: Illegal projection."));
        log.logDebug(QStringLiteral("proj=") + _name);
        log.logDebug(QStringLiteral("refLoc=") + listed({reference.getLat(), reference.getLon()}));
        log.logDebug(QStringLiteral("earth: radius=") + QString::number(earthRadius) +
                     QStringLiteral(", flatness=") + QString::number(inverseFlattening));
        return;
    }
    const QString definition = QStringLiteral("+proj=") + _name + QStringLiteral(" +lat_0=") +
                               fixed(reference.getLat()) + QStringLiteral(" +lon_0=") +
                               fixed(reference.getLon()) + QStringLiteral(" +a=") + fixed(earthRadius) +
                               QStringLiteral(" +rf=") + fixed(inverseFlattening);
    _handles->context = proj_context_create();
    proj_log_level(_handles->context, PJ_LOG_NONE);
    _handles->projection = proj_create(_handles->context, definition.toLatin1().constData());
    if (_handles->projection == nullptr) {
        log.logError(QStringLiteral("QUORGeoProjection::QUORGeoProjection(): pj_init_plus() failed!"));
        log.logError(QStringLiteral("err: ") + _handles->errorText(proj_context_errno(_handles->context)));
        log.logError(QStringLiteral("proj: ") + definition);
        return;
    }
    _handles->centre(reference);
}

QUORGeoProjection::~QUORGeoProjection() = default;

QUORPoint3D QUORGeoProjection::projectFromLatLon(const QUORCoordinate& c) const {
    const QMutexLocker lock(&_handles->mutex);
    return _handles->forward(c);
}

void QUORGeoProjection::projectFromLatLon(std::span<const QUORCoordinate> coordinates,
                                          std::span<QUORPoint3D> points) const {
    const QMutexLocker lock(&_handles->mutex);
    std::ranges::transform(coordinates, points.begin(),
                           [this](const QUORCoordinate& c) { return _handles->forward(c); });
}

QUORCoordinate QUORGeoProjection::projectToLatLon(const QUORPoint3D& p) const {
    const QMutexLocker lock(&_handles->mutex);
    if (_handles->projection == nullptr) {
        if (_handles->notReadyInverse.isDue()) {
            QUORLog::Instance().logError(
                QStringLiteral("QUORGeoProjection::projectToLatLon(): projection not initialized."));
        }
        return {};
    }
    PJ_COORD point = proj_coord(p.x + _handles->originX, p.y + _handles->originY, p.z, 0.0);
    if (_handles->transform(PJ_INV, point)) {
        return {std::clamp(point.lp.phi / QUORUnits::RADIANS_PER_DEGREE, -90.0, 90.0),
                std::remainder(point.lp.lam / QUORUnits::RADIANS_PER_DEGREE, 360.0)};
    }
    if (_handles->failedInverse.isDue()) {
        _handles->logFailure(
            QStringLiteral("QUORGeoProjection::projectToLatLon((): pj_transform() failed! ret="),
            QStringLiteral("srcXYZ=(") + listed({p.x, p.y, p.z}) + QLatin1Char(')'));
    }
    return {};
}

bool QUORGeoProjection::isSameMap(const QUORGeoProjection& other) const {
    return _reference == other._reference && _name == other._name && _earthRadius == other._earthRadius &&
           _inverseFlattening == other._inverseFlattening;
}

double QUORGeoProjection::getScaleAtReference() const {
    const QMutexLocker lock(&_handles->mutex);
    if (_handles->projection == nullptr) {
        return 1.0;
    }
    const PJ_COORD place = proj_coord(_reference.getLon() * QUORUnits::RADIANS_PER_DEGREE,
                                      _reference.getLat() * QUORUnits::RADIANS_PER_DEGREE, 0.0, 0.0);
    proj_errno_reset(_handles->projection);
    const double scale = proj_factors(_handles->projection, place).meridional_scale;
    return std::isfinite(scale) && scale > 0.0 ? scale : 1.0;
}

bool QUORGeoProjection::isReady() const {
    return _handles->projection != nullptr;
}
