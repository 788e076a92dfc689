// SPDX-License-Identifier: MIT
#include "QUORProductWriter.h"

#include "QUORDataType.h"
#include "QUORFilePublisher.h"
#include "QUORImportError.h"
#include "QUORProductHeader.h"
#include "QUORRadarData.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace {

using namespace QUORProductHeader;

struct Naming {
    int product;
    const char* letters;
    const char* extension;
};
constexpr Naming NAMINGS[] = {
    {1, "PPI", "ppi"}, {3, "CA", "cap"}, {10, "VIL", "vil"}, {16, "MAX", "max"}, {32, "SRI", "sri"}};

const Naming& namingOf(int product) {
    return *std::find_if(std::begin(NAMINGS), std::end(NAMINGS) - 1,
                         [product](const Naming& row) { return row.product == product; });
}

/// Letters that Unicode does not take apart.
QString plain(QChar letter) {
    constexpr std::pair<char16_t, const char*> letters[] = {
        {u'\u00D8', "O"}, {u'\u00C6', "AE"}, {u'\u0152', "OE"}, {u'\u1E9E', "SS"},
        {u'\u0141', "L"}, {u'\u0110', "D"},  {u'\u00D0', "D"},  {u'\u00DE', "TH"}};
    for (const auto& [from, to] : letters) {
        if (letter == QChar(from)) {
            return QString::fromLatin1(to);
        }
    }
    return QString(letter);
}

QString trimmed(QString site) {
    while (site.endsWith(QLatin1Char('_'))) {
        site.chop(1);
    }
    while (site.startsWith(QLatin1Char('_'))) {
        site.remove(0, 1);
    }
    return site;
}

/// In hundredths of a degree.
QString nameOfPlace(double latitude, double longitude) {
    const auto part = [](double degrees, int digits, const char* signs) {
        const int hundredths = int(std::lround(degrees * 100.0));
        return QLatin1Char(signs[hundredths < 0 ? 1 : 0]) +
               QString::number(std::abs(hundredths)).rightJustified(digits, QLatin1Char('0'));
    };
    return QStringLiteral("AT_") + part(latitude, 4, "NS") + QLatin1Char('_') + part(longitude, 5, "EW");
}

quint32 binaryAngle(double degrees) {
    return quint32(std::llround(std::remainder(degrees, 360.0) / 360.0 * 4294967296.0));
}

template <class T>
T limited(double value) {
    return T(std::llround(
        std::clamp(value, double(std::numeric_limits<T>::min()), double(std::numeric_limits<T>::max()))));
}

PHD headerOf(const QUORProductContent& content, qint64 size) {
    PHD header{};
    HEADER_ID.put(header, HEADER_ID_VALUE);
    PRODUCT_ID.put(header, PRODUCT_ID_VALUE);
    TOTAL_SIZE.put(header, qint32(size));
    PRODUCT_CODE.put(header, quint16(content.product));
    const QDateTime time = content.time.toUTC();
    SECONDS.put(header, quint32(time.time().msecsSinceStartOfDay() / 1000));
    YEAR.put(header, quint16(time.date().year()));
    MONTH.put(header, quint16(time.date().month()));
    DAY.put(header, quint16(time.date().day()));
    const auto putAxis = [&](const Field<qint32>& step, const Field<qint32>& points, std::size_t axis) {
        step.put(header, limited<qint32>(content.shape.steps[axis] * 100.0));
        points.put(header, content.shape.points[axis]);
    };
    putAxis(X_STEP, X_POINTS, 0);
    putAxis(Y_STEP, Y_POINTS, 1);
    putAxis(Z_STEP, Z_POINTS, 2);
    X_RADAR.put(header, limited<qint32>(content.shape.radar[0] * 1000.0));
    Y_RADAR.put(header, limited<qint32>(content.shape.radar[1] * 1000.0));
    DATA_TYPE.put(header, quint16(content.type));
    const QByteArray site = content.site.toLatin1().leftJustified(SITE_LENGTH, ' ', true);
    std::copy(site.begin(), site.end(), header.begin() + SITE_OFFSET);
    LATITUDE.put(header, binaryAngle(content.latitude));
    LONGITUDE.put(header, binaryAngle(content.longitude));
    GROUND_ELEVATION.put(header, limited<qint16>(content.groundElevation));
    RADAR_HEIGHT.put(header, limited<qint16>(content.radarHeight));
    PRF.put(header, content.prf);
    PRF_MODE.put(header, quint16(content.prfMode));
    WAVELENGTH.put(header, content.wavelength);
    EARTH_RADIUS.put(header, limited<quint32>(content.earthRadius * 100.0));
    INVERSE_FLATTENING.put(header, limited<quint32>(content.inverseFlattening * 1e6));
    return header;
}

} // namespace

QString QUORProductWriter::siteName(const QString& name, double latitude, double longitude) {
    QString site;
    for (const QChar raw : name.toUpper()) {
        for (const QChar letter : plain(raw).normalized(QString::NormalizationForm_KD)) {
            const char c = letter.toLatin1();
            if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-') {
                site += letter;
            } else if (letter.category() != QChar::Mark_NonSpacing && !site.endsWith(QLatin1Char('_'))) {
                site += QLatin1Char('_');
            }
        }
    }
    site = trimmed(site);
    if (site.isEmpty()) {
        return nameOfPlace(latitude, longitude);
    }
    if (site.size() <= SITE_LENGTH) {
        return site;
    }
    const QByteArray mark = QCryptographicHash::hash(site.toLatin1(), QCryptographicHash::Sha256);
    site.truncate(SITE_LENGTH - 5);
    return trimmed(site) + QLatin1Char('-') + QString::fromLatin1(mark.toHex().left(4).toUpper());
}

QString QUORProductWriter::fileName(const QUORProductContent& content) {
    const Naming& naming = namingOf(content.product);
    const QString quantity = QUORDataType(content.type).getConfiguration();
    return (QString::fromLatin1(naming.letters) + quantity).left(3) +
           content.time.toUTC().toString(QStringLiteral("yyMMddHHmmss")) + QLatin1Char('-') + content.site +
           QLatin1Char('.') + QLatin1String(naming.extension);
}

QByteArray QUORProductWriter::toBytes(const QUORProductContent& content, std::span<const float> values) {
    const QUORDataType type(content.type, content.prf, content.prfMode, content.wavelength, 0);
    // Stored values of an unnamed type are one byte each.
    const int itemSize = std::max(type.getItemSize(), 1);
    const qint64 size = qint64(sizeof(PHD)) + qint64(values.size()) * itemSize;
    if (size > std::numeric_limits<qint32>::max()) {
        throw QUORImportError(QStringLiteral("the product would be larger than 2 GiB"));
    }
    const auto stored = [&](double value) {
        return std::clamp(type.displayToAbsoluteValue(value), type.getMinAbsValue(), type.getMaxAbsValue());
    };
    const unsigned int noData = type.getNoDataValue();
    const unsigned int noEcho = content.noEcho ? stored(*content.noEcho) : noData;
    const PHD header = headerOf(content, size);
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    std::copy(header.begin(), header.end(), bytes.begin());
    auto* out = reinterpret_cast<uchar*>(bytes.data()) + sizeof(PHD);
    for (const float value : values) {
        const unsigned int element = QUORRadarValue::isNoData(value)   ? noData
                                     : QUORRadarValue::isNoEcho(value) ? noEcho
                                                                       : stored(double(value));
        if (itemSize == 1) {
            *out = uchar(element);
        } else {
            qToLittleEndian(quint16(element), out);
        }
        out += itemSize;
    }
    return bytes;
}

void QUORProductWriter::publish(const QByteArray& bytes, const QString& path) {
    const auto fail = [&path](const QString& reason) -> QUORWriteError {
        return QUORWriteError(QStringLiteral("cannot write ") + path + QStringLiteral(": ") + reason);
    };
    if (!QDir().mkpath(QFileInfo(path).path())) {
        throw fail(QStringLiteral("the folder cannot be made"));
    }
    QUORFilePublisher publisher(path);
    if (!publisher.isReady()) {
        throw fail(publisher.getError());
    }
    QFile file(publisher.getTemporaryPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size()) {
        throw fail(file.errorString());
    }
    file.close();
    if (!publisher.publish(false)) {
        throw fail(publisher.getError());
    }
}
