// SPDX-License-Identifier: MIT
// How fast a large product directory is taken in, an arrival is noticed and a file is found.
#include "ProductWriter.h"
#include "QUOR3DTop.h"
#include "QUORDataStore.h"
#include "QUORDataStoreObserver.h"
#include "QUORDirectoryListing.h"
#include "QUORLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int WATCHED_FILES = 10000;
constexpr int INDEXED_FILES = 100000;
constexpr int ARRIVALS = 20;
constexpr int SEARCHES = 1000;

class Observer : public QUORDataStoreObserver {
public:
    explicit Observer(QEventLoop& loop) : _loop(loop) {}
    void dataStoreNewDataAvailable3d(QUORDataStore*, const QStringList&, const QStringList&) override {
        _loop.quit();
    }
    void dataStoreNewDataAvailable2d(QUORDataStore*, const QStringList&, const QStringList&) override {}

private:
    QEventLoop& _loop;
};

SampleProduct productNumber(int number) {
    SampleProduct product;
    product.points = {2, 2, 2};
    product.values.assign(8, 1);
    product.site = "SITE" + QByteArray::number(number % 5);
    product.type = number % 2 == 0 ? SampleProduct::Reflectivity8 : SampleProduct::Velocity8;
    product.time = product.time.addSecs(60 * (number / 10));
    return product;
}

QString nameOf(int number) {
    const SampleProduct product = productNumber(number);
    QString name = ProductWriter::fileName(product);
    return name.replace(0, 1, QString::number(number % 5));
}

void write(int number, const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(ProductWriter::toBytes(productNumber(number))) < 0) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

void fill(const QString& folder, int from, int to) {
    for (int number = from; number < to; ++number) {
        write(number, folder + QLatin1Char('/') + nameOf(number));
    }
}

double millisecondsOf(const std::function<void()>& action) {
    QElapsedTimer timer;
    timer.start();
    action();
    return double(timer.nsecsElapsed()) / 1e6;
}

void print(const char* what, double value, const char* unit) {
    std::printf("%-48s %10.3f %s\n", what, value, unit);
}

void measureWatching(const QTemporaryDir& base, const QString& folder) {
    QEventLoop loop;
    Observer observer(loop);
    std::unique_ptr<QUORDataStore> store;
    print("start over 10,000 files", millisecondsOf([&] {
              store = std::make_unique<QUORDataStore>(&observer);
              store->setDirectories(folder, base.filePath(QStringLiteral("2d")),
                                    base.filePath(QStringLiteral("geo")),
                                    base.filePath(QStringLiteral("cache")));
          }),
          "ms");
    std::vector<double> arrivals;
    for (int i = 0; i < ARRIVALS; ++i) {
        const int number = WATCHED_FILES + i;
        const QString ready = base.filePath(QStringLiteral("ready"));
        write(number, ready);
        arrivals.push_back(millisecondsOf([&] {
            QFile::rename(ready, folder + QLatin1Char('/') + nameOf(number));
            loop.exec();
        }));
    }
    std::sort(arrivals.begin(), arrivals.end());
    print("one arrival until it is reported, median", arrivals[arrivals.size() / 2], "ms");
    print("one arrival until it is reported, slowest", arrivals.back(), "ms");
}

void measureSearching(const QString& folder) {
    print("listing of 100,000 names",
          millisecondsOf([&] { Q_UNUSED(QUORDirectoryListing(folder).getNames().size()); }), "ms");
    std::unique_ptr<QUOR3DTop> top;
    print("tree of 100,000 files", millisecondsOf([&] { top = std::make_unique<QUOR3DTop>(folder); }), "ms");
    const QString any = QStringLiteral("*");
    std::vector<QUORFileLeaf::Ptr> leaves;
    print("search by name", millisecondsOf([&] {
                                for (int i = 0; i < SEARCHES; ++i) {
                                    leaves.push_back(top->findLeaf(nameOf(i * (INDEXED_FILES / SEARCHES))));
                                }
                            }) / SEARCHES,
          "ms");
    print("best match in time", millisecondsOf([&] {
                                    for (const QUORFileLeaf::Ptr& leaf : leaves) {
                                        if (!leaf || !top->findBestMatching3DFile(leaf, any, 600)) {
                                            qFatal("a file was not found");
                                        }
                                    }
                                }) / SEARCHES,
          "ms");
    print("list of all leaves", millisecondsOf([&] { top->findLeaves(any, any, any, any); }), "ms");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QUORLog::Instance().logOpen({});
    const QTemporaryDir base;
    for (const char* name : {"3d", "2d", "geo"}) {
        QDir(base.path()).mkdir(QLatin1String(name));
    }
    const QString folder = base.filePath(QStringLiteral("3d"));
    fill(folder, 0, WATCHED_FILES);
    measureWatching(base, folder);
    fill(folder, WATCHED_FILES + ARRIVALS, INDEXED_FILES);
    measureSearching(folder);
    return 0;
}
