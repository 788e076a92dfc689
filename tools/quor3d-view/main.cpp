// SPDX-License-Identifier: MIT
#include "QUORLog.h"
#include "QUORSystem.h"
#include "QUORVersion.h"
#include "QUORViewerWindow.h"

#include <CLI/CLI.hpp>

#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QTimer>
#include <QTranslator>

#include <clocale>

namespace {

const char* const EXAMPLES =
    "Examples:\n"
    "  quor3d-view                        the directory of the settings\n"
    "  quor3d-view /data/volumes          the newest volume there, and those that come\n"
    "  quor3d-view CAZ210729123848.cap    one volume\n"
    "  quor3d-view /data/volumes --flat /data/flat --terrain /data/tiles\n";

QString absolute(const std::string& path) {
    return path.empty() ? QString()
                        : QDir::current().absoluteFilePath(QUORSystem::toPath(QString::fromStdString(path)));
}

/// Of the toolkit and, where there is one, of ours.
void installTranslations(QApplication& application) {
    const QString folders[] = {QLibraryInfo::path(QLibraryInfo::TranslationsPath),
                               QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quor3dd")};
    const QString names[] = {QStringLiteral("qtbase"), QStringLiteral("quor3d-view")};
    for (int i = 0; i < 2; ++i) {
        auto* translator = new QTranslator(&application);
        if (translator->load(QLocale(), names[i], QStringLiteral("_"), folders[i])) {
            QCoreApplication::installTranslator(translator);
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    std::string path;
    std::string flat;
    std::string terrain;
    CLI::App options{"See weather radar volumes from all sides", "quor3d-view"};
    options.footer(EXAMPLES);
    options.set_version_flag("--version", QUOR_VERSION);
    options
        .add_option("PATH", path, "A product file, or a directory of them (default: that of the settings)")
        ->type_name("");
    options.add_option("--flat", flat, "Directory of the 2D products")->type_name("DIR");
    options.add_option("--terrain", terrain, "Directory of the terrain tiles")->type_name("DIR");
    try {
        options.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return options.exit(error) == 0 ? 0 : 2;
    }
    static int count = 1;
    const QApplication application(count, argv);
    std::setlocale(LC_NUMERIC, "C");
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
    QCoreApplication::setOrganizationName(QUORSystem::ORGANIZATION_NAME);
    QGuiApplication::setApplicationDisplayName(QString());
    QGuiApplication::setDesktopFileName(QStringLiteral("quor3d-view"));
    QUORLog::Instance().logOpen({});
    installTranslations(*qApp);
    QUORViewerWindow window({absolute(flat), absolute(terrain)});
    window.show();
    // Once the window stands: a large directory takes its time.
    QTimer::singleShot(0, &window,
                       [&] { path.empty() ? window.openConfigured() : window.open(absolute(path)); });
    return QApplication::exec();
}
