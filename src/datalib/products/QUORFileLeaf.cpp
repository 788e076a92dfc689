// SPDX-License-Identifier: MIT
#include "QUORFileLeaf.h"

#include <QTextStream>

#include <cstdio>

QUORFileLeaf::QUORFileLeaf(const QString& time, QUORDirectory* parent, QUORFile::CPtr file)
    : QUORDirectory(File, time, parent),
      _file(std::move(file)),
      _site(getAncestorName(3)),
      _product(getAncestorName(2)),
      _configuration(getAncestorName(1)),
      _time(time) {}

QString QUORFileLeaf::getPath() const {
    return _file ? _file->getPath() : QString();
}

QString QUORFileLeaf::getKey() const {
    const QChar slash = QLatin1Char('/');
    return _site + slash + _product + slash + _configuration + slash + _time;
}

bool QUORFileLeaf::isValid() const {
    return _file && _file->isValid();
}

void QUORFileLeaf::printSelf() const {
    QUORDirectory::printSelf();
    if (!_file) {
        return;
    }
    QTextStream out(stdout);
    out << "width, height, depth: " << _file->getXPoints() << ' ' << _file->getYPoints() << ' '
        << _file->getZPoints() << "\nscaling: " << _file->getXScale() << ' ' << _file->getYScale() << ' '
        << _file->getZScale() << "\ndata item size: " << _file->getItemSize() << '\n';
}

QUORDirectory::Ptr QUORFileLeaf::makeChild(const QString&, QUORFile::CPtr) {
    return nullptr;
}
