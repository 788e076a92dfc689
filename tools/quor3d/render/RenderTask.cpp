// SPDX-License-Identifier: MIT
#include "RenderTask.h"

#include <QJsonArray>

namespace {

const QString INPUT = QStringLiteral("input");
const QString WITH = QStringLiteral("with");
const QString PICTURES = QStringLiteral("pictures");
const QString OUTPUT = QStringLiteral("output");
const QString VIEW = QStringLiteral("view");
const QString STATE = QStringLiteral("state");
const QString HEADING = QStringLiteral("heading");
const QString PITCH = QStringLiteral("pitch");
const QString DISTANCE = QStringLiteral("distance");
const QString WIDTH = QStringLiteral("width");
const QString HEIGHT = QStringLiteral("height");
const QString FORMAT = QStringLiteral("format");

} // namespace

QJsonObject RenderTask::toJson() const {
    QJsonArray list;
    for (const Picture& picture : pictures) {
        const QUORPictureOrder& order = picture.order;
        QJsonObject entry{{OUTPUT, order.path}, {VIEW, order.viewAngle}, {STATE, picture.state},
                          {WIDTH, order.width}, {HEIGHT, order.height},  {FORMAT, int(order.format)}};
        if (order.angles) {
            entry[HEADING] = order.angles->heading;
            entry[PITCH] = order.angles->pitch;
            if (order.angles->distance) {
                entry[DISTANCE] = *order.angles->distance;
            }
        }
        list.append(entry);
    }
    return {{INPUT, input}, {WITH, with}, {PICTURES, list}};
}

RenderTask RenderTask::fromJson(const QJsonObject& json) {
    RenderTask task{json[INPUT].toString(), json[WITH].toString(), {}};
    for (const auto value : json[PICTURES].toArray()) {
        const QJsonObject entry = value.toObject();
        Picture picture;
        picture.state = entry[STATE].toString();
        picture.order.path = entry[OUTPUT].toString();
        picture.order.viewAngle = entry[VIEW].toString();
        picture.order.width = entry[WIDTH].toInt();
        picture.order.height = entry[HEIGHT].toInt();
        picture.order.format = QUORExportSettings::OutputFormat(entry[FORMAT].toInt());
        if (entry.contains(HEADING)) {
            picture.order.angles =
                QUORPictureOrder::Angles{entry[HEADING].toDouble(), entry[PITCH].toDouble(), {}};
            if (entry.contains(DISTANCE)) {
                picture.order.angles->distance = entry[DISTANCE].toDouble();
            }
        }
        task.pictures.push_back(picture);
    }
    return task;
}
