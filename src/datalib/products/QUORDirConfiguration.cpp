// SPDX-License-Identifier: MIT
#include "QUORDirConfiguration.h"

#include <algorithm>

namespace {

QDateTime timeOf(const QUORFileLeaf& leaf) {
    return leaf.getFile() ? leaf.getFile()->getDataTime() : QDateTime();
}

} // namespace

QUORDirConfiguration::QUORDirConfiguration(const QString& name, QUORDirectory* parent)
    : QUORDirectory(Configuration, name, parent) {}

QUORDirectory::Ptr QUORDirConfiguration::makeChild(const QString& name, QUORFile::CPtr file) {
    const auto leaf = std::make_shared<QUORFileLeaf>(name, this, std::move(file));
    if (const QDateTime time = timeOf(*leaf); time.isValid()) {
        _byTime.emplace(time.toMSecsSinceEpoch(), leaf);
    }
    return leaf;
}

void QUORDirConfiguration::removeChild(const QString& name) {
    if (const auto leaf = std::dynamic_pointer_cast<QUORFileLeaf>(findChildByName(name))) {
        const auto [first, last] = _byTime.equal_range(timeOf(*leaf).toMSecsSinceEpoch());
        const auto entry = std::find_if(first, last, [&](const auto& e) { return e.second == leaf; });
        if (entry != last) {
            _byTime.erase(entry);
        }
    }
    QUORDirectory::removeChild(name);
}

QVector<QUORFileLeaf::Ptr> QUORDirConfiguration::findBetween(qint64 first, qint64 last) const {
    QVector<QUORFileLeaf::Ptr> leaves;
    for (auto entry = _byTime.lower_bound(first); entry != _byTime.end() && entry->first <= last; ++entry) {
        leaves.append(entry->second);
    }
    return leaves;
}
