// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLog.h"
#include "QUORVisualElement.h"

#include <QString>

#include <utility>

/// In what the log lines of an element kind's update differ from another's.
struct QUORElementTexts {
    const char* className;
    /// What follows "update(): " when an element without a record gets its first.
    const char* creating;
    bool logsCalled;
    bool logsFinished;
};

/// The update contract that all element kinds share, for one class of parameter record. A kind gives its
/// texts, `rebuild()` and `invalidate()`, which drops `_params`, `_prop` and whatever else it holds.
template <class Parameters>
class QUORTypedVisualElement : public QUORVisualElement {
public:
    vtkSmartPointer<vtkProp> getProp() final { return _prop; }

    void update(std::shared_ptr<const QUORLayerParameters> params, bool visible,
                const QUORAbortFlag& abort) final {
        if (_texts.logsCalled) {
            logUpdate("update() called.");
        }
        if (auto record = std::dynamic_pointer_cast<const Parameters>(std::move(params))) {
            if (accept(std::move(record))) {
                rebuild(abort);
            }
            show(visible);
        } else {
            logUpdate("update(): layer parameters not set.");
            invalidate();
        }
        if (_texts.logsFinished) {
            logUpdate("update() finished.");
        }
    }

    void invalidate() override = 0;

protected:
    QUORTypedVisualElement(QUORVisualGroup* group, int key, const QUORElementTexts& texts)
        : QUORVisualElement(group, key), _texts(texts) {}

    /// Builds the VTK objects anew from `_params`, which is set.
    virtual void rebuild(const QUORAbortFlag& abort) = 0;
    /// Called at the end of every update with a usable record, for kinds that build their display
    /// objects only once their layer is visible.
    virtual void show(bool /*visible*/) {}

    /// The record of the last accepted update; null when the element is empty.
    std::shared_ptr<const Parameters> _params;
    vtkSmartPointer<vtkProp> _prop;

private:
    /// Adopts a first or changed record.
    bool accept(std::shared_ptr<const Parameters> record) {
        if (_params && !_params->hasChanged(*record)) {
            logUpdate("update(): No need to update.");
            return false;
        }
        logUpdate(_params ? QStringLiteral("update(): Re-creating changed visualization..")
                          : QStringLiteral("update(): ") + QLatin1String(_texts.creating));
        _params = std::move(record);
        return true;
    }

    void logUpdate(const QString& text) const {
        QUORLog::Instance().logDebug(QLatin1String(_texts.className) + QStringLiteral("::") + text);
    }

    QUORElementTexts _texts;
};
