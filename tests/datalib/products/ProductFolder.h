// SPDX-License-Identifier: MIT
#pragma once

#include "TestFiles.h"
#include "TestProduct.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <sys/stat.h>

/// A directory of products of one site, one for each minute.
class ProductFolder : public testing::Test {
protected:
    ProductFolder() { QDir().mkpath(folder()); }

    QString folder() const { return _dir.path() + QStringLiteral("/products"); }
    QString pathOf(const QString& name) const { return folder() + QLatin1Char('/') + name; }
    static TestProduct product(int minute) {
        TestProduct product;
        product.time.setTime({12, minute});
        return product;
    }
    QString write(int minute) const {
        product(minute).write(folder());
        return product(minute).fileName();
    }
    void append(const QString& name, const QByteArray& bytes) const {
        QFile file(pathOf(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Append));
        file.write(bytes);
    }
    /// By the path, as transfers do after the last byte.
    static void setTime(const QString& path, const QDateTime& time) {
        const qint64 ms = time.toMSecsSinceEpoch();
        const timespec t{ms / 1000, ms % 1000 * 1000000};
        const std::array times{t, t};
        EXPECT_EQ(::utimensat(AT_FDCWD, qPrintable(path), times.data(), 0), 0);
    }

    QTemporaryDir _dir;
};
