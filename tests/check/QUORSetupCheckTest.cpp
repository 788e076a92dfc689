// SPDX-License-Identifier: MIT
#include "QUORSetupCheck.h"

#include "QUORColormap.h"
#include "ScratchHome.h"
#include "TestFiles.h"
#include "TestProduct.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString MAIN = QStringLiteral("QUOR3D.conf");
const QString BACKGROUND = QStringLiteral("quor3dd.conf");
const QString COLORS = QStringLiteral("QUOR3DColors.conf");
const QString STYLES = QStringLiteral("QUOR3DVisStyles.conf");
const QString LANDMARKS = QStringLiteral("QUOR3DLandmarks.conf");

/// A setup that draws: one volume with its rainfall product, and settings that name everything.
class Example {
public:
    Example() {
        for (const char* name : {"3d", "2d", "geo", "out"}) {
            QDir().mkpath(folder(name));
        }
        volume.write(folder("3d"));
        TestProduct::sri().write(folder("2d"));
        ScratchHome::writePackaged(
            COLORS, QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
        const QString root = _home.path();
        texts[MAIN] =
            QStringLiteral("[GENERAL]\ndata3d=%1/3d\ndata2d=%1/2d\ntimewindow=180\n"
                           "[PRODUCT CAPPI Z]\nrendering=surface\ncolormap=Default\nsurface\\size=1\n"
                           "surface\\1\\isovalue=40\nsurface\\1\\opacity=100\n")
                .arg(root);
        texts[BACKGROUND] =
            QStringLiteral("[BACKGROUND]\nactivated=true\ndirectory=%1/out\noutputformat=PNG\n"
                           "width=1600\ndisplaystate=Default\nviewangle=Default\n")
                .arg(root);
        qputenv("QUOR3D_BG_SETTINGS", QFile::encodeName(path(BACKGROUND)));
    }
    ~Example() {
        qunsetenv("QUOR3D_BG_SETTINGS");
        if (::geteuid() != _user) {
            EXPECT_EQ(::seteuid(_user), 0);
        }
    }

    QString folder(const char* name) const { return _home.path() + QLatin1Char('/') + QLatin1String(name); }
    static QString path(const QString& file) {
        return ScratchHome::settingsDirectory() + QLatin1Char('/') + file;
    }
    void replace(const QString& file, const char* before, const char* after) {
        QString& text = texts[file];
        ASSERT_TRUE(text.contains(QLatin1String(before))) << before;
        text.replace(QLatin1String(before), QLatin1String(after));
    }
    void append(const QString& file, const char* text) { texts[file] += QLatin1String(text); }
    void clear(const char* name) {
        QDir directory(folder(name));
        for (const QString& file : directory.entryList(QDir::Files)) {
            directory.remove(file);
        }
    }
    /// Rights mean nothing to root.
    void becomeNobody() {
        for (const QString& name :
             {_home.path(), _home.path() + QStringLiteral("/.config"), ScratchHome::settingsDirectory()}) {
            ::chmod(qPrintable(name), 0755);
        }
        if (_user == 0) {
            ASSERT_EQ(::seteuid(65534), 0);
        }
    }

    QUORFindings check() {
        for (const auto& [file, text] : texts.asKeyValueRange()) {
            ScratchHome::writeSettings(file, text);
        }
        if (finally) {
            finally();
        }
        QUORSetupCheck check({obstacle, [](int rawType) {
                                  QStringList names;
                                  for (const auto& scale : QUORColormap::getScalesForDataType(rawType)) {
                                      names.append(scale.name);
                                  }
                                  return names;
                              }});
        check.run();
        return check.getFindings();
    }

    QMap<QString, QString> texts;
    TestProduct volume;
    /// Once the settings are written.
    std::function<void()> finally;
    std::function<QString()> obstacle = [] { return QString(); };

private:
    ScratchHome _home;
    uid_t _user = ::geteuid();
};

std::string describe(const QUORFindings& findings) {
    std::string text;
    for (const QUORFinding& finding : findings) {
        text += QUORFinding::toText(finding.cost).toStdString() + ' ' + finding.code.toStdString() + ' ' +
                finding.file.toStdString() + ':' + std::to_string(finding.line) + ' ' +
                finding.key.toStdString() + ": " + finding.problem.toStdString() + " -> " +
                finding.advice.toStdString() + '\n';
    }
    return text;
}

bool costs(const QUORFindings& findings) {
    return std::ranges::any_of(
        findings, [](const QUORFinding& finding) { return finding.cost > QUORFinding::Cost::Remark; });
}

TEST(QUORSetupCheckTest, FindsNothingWrongInASetupThatDraws) {
    Example setup;
    const QUORFindings findings = setup.check();
    EXPECT_FALSE(costs(findings)) << describe(findings);
}

struct WrongSetup {
    const char* name;
    std::function<void(Example&)> breakIt;
    const char* code;
    QUORFinding::Cost cost;
    int line;         ///< 0 where the finding has none
    const char* said; ///< a part of the problem or of the advice
};

using Cost = QUORFinding::Cost;

const WrongSetup WRONG_SETUPS[] = {
    {"swapped directories",
     [](Example& s) {
         s.replace(MAIN, "/3d\n", "/x\n");
         s.replace(MAIN, "/2d\n", "/3d\n");
         s.replace(MAIN, "/x\n", "/2d\n");
     },
     "directories-swapped", Cost::NoImages, 2, "swap data3d and data2d"},
    {"misspelt key", [](Example& s) { s.replace(MAIN, "data3d", "date3d"); }, "unknown-key", Cost::Wrong, 2,
     "write data3d"},
    {"misspelt group", [](Example& s) { s.replace(BACKGROUND, "[BACKGROUND]", "[BACKGROND]"); },
     "unknown-group", Cost::Wrong, 1, "[BACKGROUND]"},
    {"group of another file", [](Example& s) { s.append(MAIN, "[BACKGROUND]\nwidth=800\n"); },
     "unknown-group", Cost::Wrong, 11, "quor3dd.conf"},
    {"key of another group", [](Example& s) { s.append(BACKGROUND, "timewindow=300\n"); }, "wrong-group",
     Cost::Wrong, 8, "[GENERAL] of QUOR3D.conf"},
    {"name of another program", [](Example& s) { s.replace(BACKGROUND, "directory=", "outdir="); },
     "unknown-key", Cost::Wrong, 3, "write directory"},
    {"missing directory", [](Example& s) { s.replace(MAIN, "/3d\n", "/none\n"); }, "directory-missing",
     Cost::NoImages, 2, "does not exist"},
    {"no directory", [](Example& s) { s.replace(MAIN, "data3d", "; data3d"); }, "no-directory",
     Cost::NoImages, 0, "quor3d set data3d"},
    {"a file in place of the directory",
     [](Example& s) { s.replace(MAIN, "/3d\n", "/.config/QUOR/QUOR3D.conf\n"); }, "directory-missing",
     Cost::NoImages, 2, "is not a directory"},
    {"products in a folder",
     [](Example& s) {
         s.clear("3d");
         QDir().mkpath(s.folder("3d/today"));
         s.volume.write(s.folder("3d/today"));
     },
     "products-in-folder", Cost::NoImages, 2, "/3d/today"},
    {"files of another format",
     [](Example& s) {
         s.clear("3d");
         writeFile(s.folder("3d/picture.png"), QByteArray(2000, 'x'));
     },
     "no-product-files", Cost::Missing, 2, "picture.png"},
    {"a cut off product",
     [](Example& s) {
         TestProduct cut;
         cut.time = cut.time.addSecs(300);
         writeFile(s.folder("3d/") + cut.fileName(), cut.bytes().chopped(1));
     },
     "unfinished-files", Cost::Missing, 2, "incomplete"},
    {"no rights for the products",
     [](Example& s) {
         s.finally = [&s] {
             ::chmod(qPrintable(s.folder("3d")), 0000);
             s.becomeNobody();
         };
     },
     "directory-unreadable", Cost::NoImages, 0, "cannot be listed"},
    {"no rights for the images",
     [](Example& s) {
         s.finally = [&s] {
             ::chmod(qPrintable(s.folder("out")), 0555);
             s.becomeNobody();
         };
     },
     "output-not-writable", Cost::NoImages, 0, "cannot be written"},
    {"no rights for the settings",
     [](Example& s) {
         s.finally = [&s] {
             ::chmod(qPrintable(Example::path(BACKGROUND)), 0000);
             s.becomeNobody();
         };
     },
     "unreadable-file", Cost::NoImages, 0, "cannot be read"},
    {"images below the working directory",
     [](Example& s) { s.replace(BACKGROUND, "directory=", "; directory="); }, "output-relative", Cost::Wrong,
     0, "whole path"},
    {"missing output directory", [](Example& s) { s.replace(BACKGROUND, "/out", "/none"); }, "output-missing",
     Cost::NoImages, 3, "make it"},
    {"unit in a number", [](Example& s) { s.replace(BACKGROUND, "width=1600", "width=1600px"); }, "bad-value",
     Cost::Wrong, 5, "without its unit: 1600"},
    {"unit behind a blank", [](Example& s) { s.replace(MAIN, "isovalue=40", "isovalue=40 dBZ"); },
     "bad-value", Cost::Wrong, 9, "without its unit: 40"},
    {"another unit", [](Example& s) { s.replace(MAIN, "isovalue=40", "isovalue=4000"); }, "value-out-of-data",
     Cost::Wrong, 9, "dBZ"},
    {"decimal comma", [](Example& s) { s.replace(MAIN, "isovalue=40", "isovalue=40,5"); }, "bad-value",
     Cost::Wrong, 9, "40.5"},
    {"out of range", [](Example& s) { s.replace(BACKGROUND, "width=1600", "width=160000"); }, "bad-value",
     Cost::Wrong, 5, "the default 1600 counts"},
    {"another case", [](Example& s) { s.replace(BACKGROUND, "PNG", "png"); }, "bad-value", Cost::Wrong, 4,
     "write PNG"},
    {"another case of a rendering",
     [](Example& s) { s.replace(MAIN, "rendering=surface", "rendering=Surface"); }, "bad-value",
     Cost::Missing, 6, "not drawn"},
    {"unknown display state",
     [](Example& s) { s.replace(BACKGROUND, "displaystate=Default", "displaystate=Evening"); },
     "unknown-state", Cost::Wrong, 6, "Evening"},
    {"unknown view angle",
     [](Example& s) {
         s.replace(BACKGROUND, "viewangle=Default", "viewangle=From the suoth");
         s.append(MAIN, "[VIEWANGLE]\nVIEWANGLES\\size=2\nVIEWANGLES\\2\\viewAngleName=From the "
                        "south\nVIEWANGLES\\2\\viewAngleCamDirY=1\n");
     },
     "unknown-view", Cost::Wrong, 7, "write From the south"},
    {"unknown colour scale", [](Example& s) { s.replace(MAIN, "colormap=Default", "colormap=Defualt"); },
     "unknown-scale", Cost::Wrong, 7, "write Default"},
    {"colours without a size",
     [](Example& s) {
         s.append(
             COLORS,
             "[COLORSCALE 9]\nname=Mine\ndata_index=1\ncolorset_index=9\npoints\\size=1\npoints\\1\\seam=5\n"
             "[COLORSET 9]\npoints\\1\\lower\\r=255\n");
     },
     "set-without-size", Cost::Wrong, 0, "points\\size"},
    {"colours of 0 to 255 in the styles",
     [](Example& s) { s.append(STYLES, "[RENDERER_DAY]\nbackground\\color\\r=204\n"); }, "bad-value",
     Cost::Wrong, 2, "write 0.8"},
    {"a landmark without a place",
     [](Example& s) {
         s.append(
             LANDMARKS,
             "[LANDMARKS]\nlandmarks\\size=1\nlandmarks\\1\\label=Town\nlandmarks\\1\\location\\lat=60\n");
     },
     "landmark-without-place", Cost::Wrong, 3, "location/lon"},
    {"an array without its size", [](Example& s) { s.replace(MAIN, "surface\\size=1\n", ""); },
     "array-without-size", Cost::Wrong, 8, "surface\\size=1"},
    {"a key twice", [](Example& s) { s.append(BACKGROUND, "width=800\n"); }, "duplicate-key", Cost::Wrong, 5,
     "line 8"},
    {"a line of prose", [](Example& s) { s.append(BACKGROUND, "all images\n"); }, "bad-line", Cost::Wrong, 8,
     "comment"},
    {"none for (none)",
     [](Example& s) { s.append(BACKGROUND, "products\\size=4\nproducts\\4\\product=none\n"); }, "bad-value",
     Cost::Missing, 9, "write (none)"},
    {"no 2D product", [](Example& s) { s.clear("2d"); }, "no-2d-product", Cost::NoImages, 0, "no SRI at all"},
    {"no 2D product, not waited for",
     [](Example& s) {
         s.clear("2d");
         s.append(BACKGROUND, "wait2d=90\n");
     },
     "no-2d-product", Cost::Wrong, 0, "90 s late"},
    {"another 2D product",
     [](Example& s) {
         s.clear("2d");
         TestProduct vil = TestProduct::sri();
         vil.code = SampleProduct::Vil;
         vil.write(s.folder("2d"));
     },
     "no-2d-product", Cost::NoImages, 0, "but VIL"},
    {"2D products of another site",
     [](Example& s) {
         s.clear("2d");
         TestProduct other = TestProduct::sri();
         other.site = "ELSEWHERE";
         other.write(s.folder("2d"));
     },
     "no-2d-product", Cost::NoImages, 0, "only of ELSEWHERE"},
    {"2D products of another time",
     [](Example& s) {
         s.clear("2d");
         TestProduct late = TestProduct::sri();
         late.time = late.time.addSecs(300);
         late.write(s.folder("2d"));
     },
     "no-2d-product", Cost::NoImages, 0, "300 s away"},
    {"settings in another home",
     [](Example& s) { qputenv("QUOR3D_BG_SETTINGS", QFile::encodeName(s.folder("other.conf"))); },
     "background-file-elsewhere", Cost::Wrong, 0, "QUOR3D_BG_SETTINGS"},
    {"no terrain tiles",
     [](Example& s) {
         s.replace(MAIN, "timewindow=180\n", ("geolayer=" + s.folder("geo") + "\n").toUtf8().constData());
     },
     "no-tiles", Cost::Wrong, 4, ".hgt"},
    {"no OpenGL", [](Example& s) { s.obstacle = [] { return QStringLiteral("no EGL display"); }; },
     "no-opengl", Cost::NoImages, 0, "no EGL display"},
};

class WrongSetupTest : public testing::TestWithParam<WrongSetup> {};

TEST_P(WrongSetupTest, IsNamedWithItsPlaceAndWhatToDo) {
    const WrongSetup& row = GetParam();
    Example setup;
    row.breakIt(setup);
    const QUORFindings findings = setup.check();
    const auto found = std::ranges::find_if(findings, [&](const QUORFinding& finding) {
        return finding.code == QLatin1String(row.code) &&
               (finding.problem + finding.advice).contains(QLatin1String(row.said));
    });
    ASSERT_NE(found, findings.cend()) << row.name << " was not found in\n" << describe(findings);
    EXPECT_EQ(found->cost, row.cost) << describe(findings);
    if (row.line > 0) {
        EXPECT_EQ(found->line, row.line) << describe(findings);
    }
    EXPECT_TRUE(std::ranges::is_sorted(findings, std::ranges::greater(), &QUORFinding::cost));
}

INSTANTIATE_TEST_SUITE_P(Table, WrongSetupTest, testing::ValuesIn(WRONG_SETUPS), [](const auto& row) {
    std::string name = row.param.name;
    std::ranges::replace_if(
        name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
});

/// Looking changes neither settings nor folders.
TEST(QUORSetupCheckTest, ChangesNothing) {
    Example setup;
    setup.replace(MAIN, "[PRODUCT CAPPI Z]", "[PRODUCT CAPPI V]");
    setup.check();
    for (const auto& [file, text] : setup.texts.asKeyValueRange()) {
        EXPECT_EQ(readFile(Example::path(file)), text.toUtf8());
    }
    EXPECT_EQ(QDir(ScratchHome::settingsDirectory()).entryList(QDir::Files | QDir::Hidden).size(),
              setup.texts.size());
    EXPECT_TRUE(QDir(setup.folder("out")).isEmpty());
}

} // namespace
