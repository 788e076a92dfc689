// SPDX-License-Identifier: MIT
#include "QUORDirectory.h"

#include <QTextStream>

#include <cstdio>

QUORDirectory::QUORDirectory(Types type, QString name, QUORDirectory* parent)
    : _name(std::move(name)), _parent(parent), _type(type) {}

QUORDirectory::~QUORDirectory() {
    release(_children);
}

void QUORDirectory::release(Children& children) {
    for (const Ptr& child : std::as_const(children)) {
        child->_parent = nullptr;
    }
    children.clear();
}

QUORDirectory::Ptr QUORDirectory::addChild(const QString& name, QUORFile::CPtr file) {
    if (Ptr child = _children.value(name)) {
        return child;
    }
    Ptr child = makeChild(name, std::move(file));
    if (child) {
        _children.insert(name, child);
    }
    return child;
}

void QUORDirectory::removeChild(const QString& name) {
    if (const Ptr child = _children.take(name)) {
        child->_parent = nullptr;
    }
    if (_children.isEmpty() && _parent != nullptr) {
        // The parent's reference may be the last one to this node: nothing is touched after the call.
        _parent.load()->removeChild(QString(_name));
    }
}

QString QUORDirectory::getAncestorName(int levels) const {
    const QUORDirectory* node = this;
    for (; node != nullptr && levels > 0; --levels) {
        node = node->getParent();
    }
    return node == nullptr ? QString() : node->getName();
}

void QUORDirectory::printSelf() const {
    QTextStream out(stdout);
    out << "name: " << _name << "\nparent: ";
    for (const QUORDirectory* node = getParent(); node != nullptr; node = node->getParent()) {
        out << node->getName() << ' ';
    }
    out << '\n';
}
