// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>

#include <chrono>
#include <list>
#include <map>
#include <optional>
#include <utility>

/// A product file that came and whose turn has not come yet.
struct QUORArrival {
    using Clock = std::chrono::steady_clock;

    QString path;
    /// Of the product in its tree.
    QString key;
    /// What it is one of: a site with a configuration or a 2D product. Empty when that is not known.
    QString series;
    /// Of its data; may be invalid.
    QDateTime time;
    Clock::time_point arrived = Clock::now();
    /// It has waited long enough for its 2D product.
    bool without2D = false;
};

/// Files in the order of their arrival, of which a live one goes first: one whose data is newer than all of
/// its series that was drawn. Of several live ones the newest goes first, of equal ones the first to arrive.
/// Data of more than an hour ahead of the clock is never live, or a radar with a wrong date would make all
/// that it sends later wait. Not locked.
class QUORArrivalQueue {
public:
    void append(const QUORArrival& arrival);
    bool isEmpty() const { return _arrivals.empty(); }
    qsizetype getSize() const { return qsizetype(_arrivals.size()); }
    void noteDrawn(const QString& series, const QDateTime& time);
    std::optional<QUORArrival> takeLive();
    std::optional<QUORArrival> takeFirst();

private:
    struct Entry {
        QUORArrival arrival;
        quint64 number;
    };
    using Entries = std::list<Entry>;
    /// Newest first, then in the order of arrival.
    using Rank = std::pair<qint64, quint64>;

    static Rank rankOf(const Entry& entry);
    static bool mayBeLive(const QString& series, const QDateTime& time);
    QUORArrival take(Entries::iterator entry);

    Entries _arrivals;
    /// Those that may be live. What is found not to be so leaves it for good, since drawn data only gets
    /// newer.
    std::map<Rank, Entries::iterator> _byTime;
    QHash<QString, qint64> _drawn; ///< the newest time of each series, in milliseconds
    quint64 _number = 0;
};
