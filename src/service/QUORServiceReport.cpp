// SPDX-License-Identifier: MIT
#include "QUORServiceReport.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <unistd.h>

namespace {

using Histogram = QUORActivity::Histogram;
using Labels = std::initializer_list<std::pair<const char*, QString>>;

/// Lines of one metric after another; every value stands behind its description.
class MetricsText {
public:
    void describe(const char* name, const char* type, const char* help) {
        _name = QLatin1String("quor3dd_") + QLatin1String(name);
        _text += "# HELP " + _name.toUtf8() + ' ' + help + "\n# TYPE " + _name.toUtf8() + ' ' + type + '\n';
    }
    void add(double value, Labels labels = {}, const char* suffix = "") {
        _text += _name.toUtf8() + suffix + format(labels) + ' ' + QByteArray::number(value, 'g', 15) + '\n';
    }
    void add(const Histogram& histogram, const char* label, const QString& value) {
        for (std::size_t i = 0; i < Histogram::BOUNDS.size(); ++i) {
            add(double(histogram.counts[i]),
                {{label, value}, {"le", QString::number(Histogram::BOUNDS[i], 'g', 6)}}, "_bucket");
        }
        add(double(histogram.count), {{label, value}, {"le", QStringLiteral("+Inf")}}, "_bucket");
        add(histogram.sum, {{label, value}}, "_sum");
        add(double(histogram.count), {{label, value}}, "_count");
    }
    QByteArray text() const { return _text; }

private:
    static QByteArray format(Labels labels) {
        QByteArray text;
        for (const auto& [name, value] : labels) {
            QString escaped = value;
            escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
                .replace(QLatin1Char('"'), QStringLiteral("\\\""))
                .replace(QLatin1Char('\n'), QStringLiteral("\\n"));
            text += (text.isEmpty() ? "" : ",") + QByteArray(name) + "=\"" + escaped.toUtf8() + '"';
        }
        return text.isEmpty() ? text : '{' + text + '}';
    }

    QString _name;
    QByteArray _text;
};

double toSeconds(const QDateTime& time) {
    return double(time.toMSecsSinceEpoch()) / 1000.0;
}

QString toText(const QDateTime& time) {
    return time.toUTC().toString(Qt::ISODateWithMs);
}

QJsonObject toObject(const QMap<QString, quint64>& counts) {
    QJsonObject object;
    for (auto count = counts.cbegin(); count != counts.cend(); ++count) {
        object.insert(count.key(), qint64(count.value()));
    }
    return object;
}

QJsonValue toValue(const std::optional<double>& seconds) {
    return seconds ? QJsonValue(*seconds) : QJsonValue();
}

QJsonObject toObject(const QUORActivity::Image& image) {
    return {{QStringLiteral("file"), image.file},
            {QStringLiteral("site"), image.site},
            {QStringLiteral("configuration"), image.configuration},
            {QStringLiteral("productTime"),
             image.productTime.isValid() ? QJsonValue(toText(image.productTime)) : QJsonValue()},
            {QStringLiteral("written"), toText(image.written)},
            {QStringLiteral("secondsAfterProduct"), toValue(image.secondsAfterProduct())},
            {QStringLiteral("secondsAfterArrival"), toValue(image.secondsAfterArrival)}};
}

QJsonObject toObject(const QUORServiceReport::Directory& directory) {
    return {{QStringLiteral("path"), directory.path},
            {QStringLiteral("products"), qint64(directory.products)}};
}

} // namespace

void QUORServiceReport::readMemory() {
    QFile file(QStringLiteral("/proc/self/statm"));
    if (file.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> pages = file.readAll().split(' ');
        const qint64 size = ::sysconf(_SC_PAGESIZE);
        virtualBytes = pages.value(0).toLongLong() * size;
        residentBytes = pages.value(1).toLongLong() * size;
    }
}

QByteArray QUORServiceReport::toMetrics() const {
    const QString kind3d = QStringLiteral("3d");
    const QString kind2d = QStringLiteral("2d");
    MetricsText text;
    text.describe("build_info", "gauge", "The version that runs.");
    text.add(1, {{"version", version}});
    text.describe("start_time_seconds", "gauge", "When the service started, since 1970 in UTC.");
    text.add(toSeconds(activity.started));
    text.describe("resident_memory_bytes", "gauge", "Memory in use.");
    text.add(double(residentBytes));
    text.describe("virtual_memory_bytes", "gauge", "Address space in use.");
    text.add(double(virtualBytes));
    text.describe("products", "gauge", "Products known in the watched directories.");
    text.add(double(directory3d.products), {{"kind", kind3d}});
    text.add(double(directory2d.products), {{"kind", kind2d}});
    text.describe("waiting_files", "gauge", "Files that arrived and wait for their turn.");
    text.add(double(activity.waiting3d), {{"kind", kind3d}});
    text.add(double(activity.waiting2d), {{"kind", kind2d}});
    text.describe("unwritten_images", "gauge",
                  "Images that could not be written and are drawn again when they can be.");
    text.add(double(activity.unwritten));
    text.describe("images_written_total", "counter", "Images written.");
    text.add(double(activity.written));
    text.describe("images_failed_total", "counter", "Images that could not be made.");
    for (auto count = activity.failed.cbegin(); count != activity.failed.cend(); ++count) {
        text.add(double(count.value()), {{"reason", count.key()}});
    }
    text.describe("files_ignored_total", "counter", "Files whose turn gave no image on purpose.");
    for (auto count = activity.ignored.cbegin(); count != activity.ignored.cend(); ++count) {
        text.add(double(count.value()), {{"reason", count.key()}});
    }
    text.describe("stage_duration_seconds", "histogram", "Time of the stages of an image.");
    for (int stage = 0; stage < QUORActivity::StageCount; ++stage) {
        text.add(activity.stages.at(std::size_t(stage)), "stage", QUORActivity::stageName(stage));
    }
    text.describe("image_lateness_seconds", "histogram",
                  "Time to the image since its product was measured, and since its file arrived.");
    text.add(activity.afterProduct, "since", QStringLiteral("product"));
    text.add(activity.afterArrival, "since", QStringLiteral("arrival"));
    text.describe("last_image_time_seconds", "gauge", "When the last image was written, since 1970 in UTC.");
    for (auto image = activity.images.cbegin(); image != activity.images.cend(); ++image) {
        text.add(toSeconds(image->written),
                 {{"site", image.key().first}, {"configuration", image.key().second}});
    }
    return text.text();
}

QByteArray QUORServiceReport::toStatus() const {
    QJsonArray images;
    for (const QUORActivity::Image& image : activity.images) {
        images.append(toObject(image));
    }
    QJsonObject status{
        {QStringLiteral("version"), version},
        {QStringLiteral("pid"), pid},
        {QStringLiteral("started"), toText(activity.started)},
        {QStringLiteral("updated"), toText(QDateTime::currentDateTimeUtc())},
        {QStringLiteral("directory3d"), toObject(directory3d)},
        {QStringLiteral("directory2d"), toObject(directory2d)},
        {QStringLiteral("output"), QJsonObject{{QStringLiteral("path"), output},
                                               {QStringLiteral("format"), imageFormat},
                                               {QStringLiteral("width"), width},
                                               {QStringLiteral("height"), height}}},
        {QStringLiteral("written"), qint64(activity.written)},
        {QStringLiteral("failed"), toObject(activity.failed)},
        {QStringLiteral("ignored"), toObject(activity.ignored)},
        {QStringLiteral("waiting"), QJsonObject{{QStringLiteral("3d"), qint64(activity.waiting3d)},
                                                {QStringLiteral("2d"), qint64(activity.waiting2d)}}},
        {QStringLiteral("unwritten"), qint64(activity.unwritten)},
        {QStringLiteral("residentBytes"), residentBytes},
        {QStringLiteral("lastImage"), activity.last ? QJsonValue(toObject(*activity.last)) : QJsonValue()},
        {QStringLiteral("images"), images}};
    status.insert(QStringLiteral("job"),
                  activity.job.isEmpty()
                      ? QJsonValue()
                      : QJsonValue(QJsonObject{{QStringLiteral("file"), activity.job},
                                               {QStringLiteral("started"), toText(activity.jobStarted)}}));
    return QJsonDocument(status).toJson();
}

QString QUORServiceReport::toLine() const {
    const QString last = activity.last ? QStringLiteral(", the last ") + activity.last->site +
                                             QLatin1Char(' ') + activity.last->configuration +
                                             QStringLiteral(" at ") + toText(activity.last->written)
                                       : QString();
    return QString::number(activity.written) + QStringLiteral(" images written") + last +
           QStringLiteral("; waiting: ") + QString::number(activity.waiting3d + activity.waiting2d) +
           QStringLiteral("; watching ") +
           (directory3d.path.isEmpty() ? QStringLiteral("nothing") : directory3d.path);
}
