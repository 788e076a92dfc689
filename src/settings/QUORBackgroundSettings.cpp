// SPDX-License-Identifier: MIT
#include "QUORBackgroundSettings.h"

#include "QUORConfig.h"
#include "QUORGuardedSettings.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsWriter.h"
#include "QUORSystem.h"
#include "QUORWildcard.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QSettings>

#include <algorithm>

const QString QUORBackgroundSettings::GROUP = QStringLiteral("BACKGROUND");
const QString QUORBackgroundSettings::ACTIVATED = QStringLiteral("activated");
const QString QUORBackgroundSettings::DIRECTORY = QStringLiteral("directory");
const QString QUORBackgroundSettings::OUTPUT_FORMAT = QStringLiteral("outputformat");
const QString QUORBackgroundSettings::VIEW_ANGLE = QStringLiteral("viewangle");
const QString QUORBackgroundSettings::DISPLAY_STATE = QStringLiteral("displaystate");
const QString QUORBackgroundSettings::HEIGHT = QStringLiteral("height");
const QString QUORBackgroundSettings::WIDTH = QStringLiteral("width");
const QString QUORBackgroundSettings::WAIT_2D = QStringLiteral("wait2d");
const QString QUORBackgroundSettings::PRODUCT_ARRAY = QStringLiteral("products");
const QString QUORBackgroundSettings::PRODUCT = QStringLiteral("product");
const QString QUORBackgroundSettings::SITES = QStringLiteral("sites");
const QString QUORBackgroundSettings::VIEW_ARRAY = QStringLiteral("views");

namespace {

const QString DEFAULT_USER = QStringLiteral("quor3d");
constexpr QUORSettingsKey PRODUCT_2D = QUORSettingsTable::row("BACKGROUND", "product", "products");

QString findConfiguredUser() {
    QFile file(QUORSystem::getSystemConfigurationDirectory() + QLatin1Char('/') +
               QUORSystem::BG_SERVICE_NAME);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QUORBackgroundSettings::findBgUser(QString::fromUtf8(file.readAll()));
}

QString userWarning() {
    return QStringLiteral("Background user not configured - using default for background username: ") +
           DEFAULT_USER;
}

QString fileNameOfUser(const QString& user) {
    return QUORSystem::getUserSettingsDirectory(user) + QLatin1Char('/') + QUORSystem::BG_SERVICE_NAME +
           QStringLiteral(".conf");
}

QString fileNameFromEnvironment() {
    return QUORSystem::toPath(QFile::decodeName(qgetenv(QUORBackgroundSettings::FILE_VARIABLE)));
}

// A record is made for every job, so its warning about the user comes once.
QString findSettingsFile() {
    QString named = fileNameFromEnvironment();
    if (!named.isEmpty()) {
        return named;
    }
    const QString user = findConfiguredUser();
    const QString subject = QStringLiteral("BG_USER");
    if (user.isEmpty()) {
        QUORLogOnce::logWarning(subject, userWarning());
        return fileNameOfUser(DEFAULT_USER);
    }
    QUORLogOnce::forget(subject);
    return fileNameOfUser(user);
}

/// Every record reads the same file, on several threads.
struct Shared {
    QMutex mutex;
    QUORGuardedSettings file{QUORBackgroundSettings::GROUP, QUORGuardedSettings::Group::Required};
};

Shared& sharedFile() {
    static Shared instance;
    return instance;
}

/// The row with another default: what a file before this one said.
QUORSettingsKey over(QUORSettingsKey row, double value) {
    row.number[0] = value;
    return row;
}

QString toShownName(const QString& name) {
    return QUORConfig::isDefaultName(name) ? QUORConfig::defaultValueTranslated() : name;
}

QString toStoredName(const QString& name) {
    return QUORConfig::isDefaultName(name) ? QUORConfig::VALUE_DEFAULT : name;
}

} // namespace

QUORBackgroundSettings::QUORBackgroundSettings() : _fileName(findSettingsFile()) {
    reset();
    load();
}

void QUORBackgroundSettings::reset() {
    using QUORSettingsTable::row;
    _activated = row("BACKGROUND", "activated").flag();
    _directory = row("BACKGROUND", "directory").defaultText();
    _outputFormat =
        QUORExportSettings::getOutputFormatFromString(row("BACKGROUND", "outputformat").defaultText());
    _viewAngleName = row("BACKGROUND", "viewangle").defaultText();
    _displayStateName = row("BACKGROUND", "displaystate").defaultText();
    _metricsFile = row("BACKGROUND", "metrics").defaultText();
    _jobLimit = row("BACKGROUND", "joblimit").whole();
    _sites = row("BACKGROUND", "sites").defaultText();
    _height = row("BACKGROUND", "height").whole();
    _width = row("BACKGROUND", "width").whole();
    _wait2d = row("BACKGROUND", "wait2d").whole();
    _furtherViews.clear();
    _products.clear();
    for (const QString& configuration : getAllConfigurations()) {
        _products.insert(configuration, PRODUCT_2D.defaultText());
    }
}

void QUORBackgroundSettings::load() {
    Shared& shared = sharedFile();
    const QMutexLocker lock(&shared.mutex);
    reset();
    readPackaged();
    const auto open = [this]() -> std::unique_ptr<QSettings> {
        QString error;
        return QUORSettingsFile::read(_fileName, error)
                   ? std::make_unique<QSettings>(_fileName, QSettings::NativeFormat)
                   : nullptr;
    };
    QSettings* settings = shared.file.open(
        _fileName, open, [this] { return describeDefaults(QDir::current().absolutePath()); });
    _isRead = !shared.file.isDamaged();
    if (settings != nullptr) {
        QUORLog::Instance().logDebug(QStringLiteral("Loading background settings from ") + _fileName +
                                     QStringLiteral(", status: ") + QString::number(int(settings->status())));
        read(*settings);
    }
    shared.file.release();
}

void QUORBackgroundSettings::readPackaged() {
    const QString path = getPackagedFileName();
    QString error;
    if (path != _fileName && QFile::exists(path) && QUORSettingsFile::read(path, error)) {
        QSettings packaged(path, QSettings::NativeFormat);
        read(packaged);
    }
}

QString QUORBackgroundSettings::describeDefaults(const QString& folder) const {
    return QStringLiteral("where it says nothing else, images go to ") + folder + QStringLiteral(" as ") +
           getOutputFormatString() + QStringLiteral(" of ") + QString::number(_width) +
           QStringLiteral(" x ") + QString::number(_height) +
           QStringLiteral(" pixels, each with its 2D product ") + _products.first();
}

void QUORBackgroundSettings::read(QSettings& settings) {
    using namespace QUORSettingsTable;
    QUORSettingsReader reader(settings);
    reader.beginGroup(GROUP);
    _activated = readFlag(reader, over(row("BACKGROUND", "activated"), _activated));
    _directory = reader.readText(DIRECTORY, _directory);
    readFormat(reader);
    _viewAngleName = reader.readText(VIEW_ANGLE, _viewAngleName);
    _displayStateName = reader.readText(DISPLAY_STATE, _displayStateName);
    _metricsFile = reader.readText(row("BACKGROUND", "metrics").nameText(), _metricsFile);
    _jobLimit = readWhole(reader, over(row("BACKGROUND", "joblimit"), _jobLimit));
    _sites = reader.readText(SITES, _sites);
    _height = readWhole(reader, over(row("BACKGROUND", "height"), _height));
    _width = readWhole(reader, over(row("BACKGROUND", "width"), _width));
    _wait2d = readWhole(reader, over(row("BACKGROUND", "wait2d"), _wait2d));
    const QStringList configurations = getAllConfigurations();
    reader.beginReadArray(PRODUCT_ARRAY, int(configurations.size()));
    for (int i = 0; i < int(configurations.size()); ++i) {
        reader.setArrayIndex(i);
        QString& product = _products[configurations.at(i)];
        product = reader.readText(PRODUCT, product);
    }
    reader.endArray();
    readViews(reader);
}

/// An array comes from one file: the packaged one counts where this one has none.
void QUORBackgroundSettings::readViews(QUORSettingsReader& reader) {
    using namespace QUORSettingsTable;
    if (!reader.contains(VIEW_ARRAY + QStringLiteral("/size"))) {
        return;
    }
    _furtherViews.clear();
    const int count = reader.beginReadArray(VIEW_ARRAY);
    for (int i = 0; i < count; ++i) {
        reader.setArrayIndex(i);
        _furtherViews.append({readText(reader, row("BACKGROUND", "viewangle", "views")),
                              readText(reader, row("BACKGROUND", "displaystate", "views")),
                              readWhole(reader, row("BACKGROUND", "width", "views")),
                              readWhole(reader, row("BACKGROUND", "height", "views"))});
    }
    reader.endArray();
}

QList<QUORBackgroundSettings::View> QUORBackgroundSettings::getViews() const {
    QList<View> views{{getViewAngleName(), getDisplayStateName(), _width, _height}};
    for (const View& further : _furtherViews) {
        View view = views.constFirst();
        if (!further.viewAngle.isEmpty()) {
            view.viewAngle = toShownName(further.viewAngle);
        }
        if (!further.displayState.isEmpty()) {
            view.displayState = toShownName(further.displayState);
        }
        view.width = further.width > 0 ? further.width : view.width;
        view.height = further.height > 0 ? further.height : view.height;
        if (!views.contains(view)) {
            views.append(view);
        }
    }
    return views;
}

void QUORBackgroundSettings::readFormat(const QUORSettingsReader& reader) {
    const QString text =
        reader.readText(OUTPUT_FORMAT, QUORExportSettings::getOutputFormatString(_outputFormat));
    _outputFormat = QUORExportSettings::getOutputFormatFromString(text);
    const QString subject = QStringLiteral("output format ") + _fileName;
    if (_outputFormat == QUORExportSettings::UnknownFormat) {
        QUORLogOnce::logWarning(
            subject, QStringLiteral("Settings file ") + _fileName + QStringLiteral(": ") + OUTPUT_FORMAT +
                         QStringLiteral("=") + text + QStringLiteral(" is not one of ") +
                         QUORExportSettings::getSupportedOutputFormats().join(QStringLiteral(", ")) +
                         QStringLiteral("; images are PNG under a name that ends in \".\""));
    } else {
        QUORLogOnce::forget(subject);
    }
}

void QUORBackgroundSettings::save() const {
    QUORLog::Instance().logDebug(QStringLiteral("Saving background settings to ") + _fileName);
    if (!QUORSettingsReader::isReadable(_fileName)) {
        return;
    }
    QSettings settings(_fileName, QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, GROUP);
    writer.write(ACTIVATED, _activated);
    writer.write(DIRECTORY, _directory);
    writer.write(OUTPUT_FORMAT, QUORExportSettings::getOutputFormatString(_outputFormat));
    writer.write(VIEW_ANGLE, _viewAngleName);
    writer.write(DISPLAY_STATE, _displayStateName);
    writer.write(SITES, _sites);
    writer.write(HEIGHT, _height);
    writer.write(WIDTH, _width);
    writer.write(WAIT_2D, _wait2d);
    const QStringList configurations = getAllConfigurations();
    writer.beginWriteArray(PRODUCT_ARRAY, int(configurations.size()));
    for (int i = 0; i < int(configurations.size()); ++i) {
        writer.setArrayIndex(i);
        writer.write(PRODUCT, get2DProduct(configurations.at(i)));
    }
    writer.endArray();
    if (!_furtherViews.isEmpty()) {
        writer.beginWriteArray(VIEW_ARRAY, int(_furtherViews.size()));
        for (int i = 0; i < int(_furtherViews.size()); ++i) {
            const View& view = _furtherViews.at(i);
            writer.setArrayIndex(i);
            writer.write(VIEW_ANGLE, view.viewAngle);
            writer.write(DISPLAY_STATE, view.displayState);
            writer.write(WIDTH, view.width);
            writer.write(HEIGHT, view.height);
        }
        writer.endArray();
    }
    writer.commit();
}

int QUORBackgroundSettings::status() const {
    QFile file(_fileName);
    if (file.open(QIODevice::ReadWrite, QFile::ReadOwner | QFile::WriteOwner)) {
        return 0;
    }
    return file.open(QIODevice::ReadOnly) ? 1 : 2;
}

QString QUORBackgroundSettings::getBgUsername() {
    QString user = findConfiguredUser();
    if (user.isEmpty()) {
        QUORLog::Instance().logWarning(userWarning());
        return DEFAULT_USER;
    }
    return user;
}

QString QUORBackgroundSettings::findBgUser(const QString& configuration) {
    static const QRegularExpression line(
        QStringLiteral("^[ \\t]*(?:export[ \\t]+)?BG_USER=(?:\"([^\"\\n]*)\"|'([^'\\n]*)'|([^\\s\"']*))"),
        QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(configuration);
    return match.captured(match.lastCapturedIndex() > 0 ? match.lastCapturedIndex() : 1).trimmed();
}

QString QUORBackgroundSettings::getBgHomeDirectory() {
    return QUORSystem::getUserHomeDirectory(getBgUsername());
}

QString QUORBackgroundSettings::getBgSettingsDirectory() {
    return QUORSystem::getUserSettingsDirectory(getBgUsername());
}

QString QUORBackgroundSettings::getPackagedFileName() {
    return QSettings(QSettings::NativeFormat, QSettings::SystemScope, QUORSystem::ORGANIZATION_NAME,
                     QUORSystem::BG_SERVICE_NAME)
        .fileName();
}

QString QUORBackgroundSettings::getBgSettingsFileName() {
    const QString named = fileNameFromEnvironment();
    return named.isEmpty() ? fileNameOfUser(getBgUsername()) : named;
}

QStringList QUORBackgroundSettings::getAllConfigurations() {
    return {QStringLiteral("R"), QStringLiteral("V"), QStringLiteral("W"), QStringLiteral("Z")};
}

QStringList QUORBackgroundSettings::getAll2DProducts() {
    return {QStringLiteral("PPI"), QStringLiteral("SRI"), QStringLiteral("VIL"), QStringLiteral("MAX"),
            QCoreApplication::translate("App", "(none)")};
}

bool QUORBackgroundSettings::isNoProduct(const QString& product) {
    return product == QLatin1String("(none)") || product == QCoreApplication::translate("App", "(none)") ||
           product == QCoreApplication::translate("QUORLiveDataThread", "(none)");
}

QString QUORBackgroundSettings::getOutputFormatString() const {
    const QString name = QUORExportSettings::getOutputFormatString(_outputFormat);
    return name.isEmpty() ? QUORExportSettings::getDefaultOutputFormatString() : name;
}

QString QUORBackgroundSettings::getOutputFileExtension() const {
    return QUORExportSettings::getOutputFileExtension(_outputFormat);
}

void QUORBackgroundSettings::set2DProduct(const QString& configuration, const QString& product) {
    _products.insert(configuration, product);
}

bool QUORBackgroundSettings::isSiteDrawn(const QString& site) const {
    static const QRegularExpression separator(QStringLiteral("[\\s,]+"));
    const QStringList patterns = _sites.split(separator, Qt::SkipEmptyParts);
    return patterns.isEmpty() || std::ranges::any_of(patterns, [&site](const QString& pattern) {
               return QUORWildcard(pattern).matches(site);
           });
}

QString QUORBackgroundSettings::getDisplayStateName() const {
    return toShownName(_displayStateName);
}

void QUORBackgroundSettings::setDisplayStateName(const QString& name) {
    _displayStateName = toStoredName(name);
}

QString QUORBackgroundSettings::getViewAngleName() const {
    return toShownName(_viewAngleName);
}

void QUORBackgroundSettings::setViewAngleName(const QString& name) {
    _viewAngleName = toStoredName(name);
}
