// SPDX-License-Identifier: MIT
#include "ServiceFolders.h"

#include <QDir>

#include <gtest/gtest.h>

#include <cstdio>

ServiceFolders::ServiceFolders(const QString& root) : _root(root) {
    for (const char* name : {"3d", "2d", "geo", "out"}) {
        QDir().mkpath(path(QString::fromLatin1(name)));
    }
}

QByteArray ServiceFolders::mainSettings(const QByteArray& more) const {
    const QByteArray root = _root.toUtf8();
    return "[GENERAL]\ndata3d=" + root + "/3d\ndata2d=" + root + "/2d\ngeolayer=" + root + "/geo\n" + more;
}

QByteArray ServiceFolders::backgroundSettings(const QByteArray& more) const {
    return "[BACKGROUND]\nactivated=true\noutputformat=PNG\nwidth=160\nheight=120\ndirectory=" +
           _root.toUtf8() + "/out\n" + more;
}

QString ServiceFolders::drop(const TestProduct& product, const QString& folder) const {
    const QString target = path(folder) + QLatin1Char('/') + product.fileName();
    const QString part = path(folder) + QStringLiteral("/.part");
    product.writeTo(part);
    EXPECT_EQ(std::rename(qPrintable(part), qPrintable(target)), 0) << qPrintable(target);
    return target;
}

TestProduct ServiceFolders::storm(int minutes) {
    TestProduct product;
    product.time = product.time.addSecs(60 * minutes);
    product.points = {16, 16, 6};
    product.radar = {7500, 7500, 0};
    product.fill = [](int x, int y, int z) {
        const bool inside = x > 4 && x < 12 && y > 4 && y < 12 && z > 0 && z < 5;
        return inside ? 160U : 1U;
    };
    return product;
}

TestProduct ServiceFolders::rain(int minutes) {
    TestProduct product = TestProduct::sri();
    product.time = product.time.addSecs(60 * minutes);
    return product;
}
