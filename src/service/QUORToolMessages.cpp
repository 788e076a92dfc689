// SPDX-License-Identifier: MIT
#include "QUORToolMessages.h"

#include "QUORLog.h"

#include <QString>

#include <vtkLogger.h>
#include <vtkNew.h>
#include <vtkObjectFactory.h>
#include <vtkOutputWindow.h>

#include <proj.h>

namespace {

void writeMessage(const char* library, const QString& text, QUORLog::Level level) {
    const QString line = QLatin1String(library) + QStringLiteral(": ") + text.simplified();
    QUORLog& log = QUORLog::Instance();
    switch (level) {
    case QUORLog::Error:
        return log.logError(line);
    case QUORLog::Warning:
        return log.logWarning(line);
    case QUORLog::Notice:
        return log.logNotice(line);
    case QUORLog::Debug:
        return log.logDebug(line);
    }
}

void takeToolkitMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    switch (type) {
    case QtDebugMsg:
        return writeMessage("Qt", text, QUORLog::Debug);
    case QtInfoMsg:
        return writeMessage("Qt", text, QUORLog::Notice);
    case QtWarningMsg:
        return writeMessage("Qt", text, QUORLog::Warning);
    case QtCriticalMsg:
    case QtFatalMsg:
        return writeMessage("Qt", text, QUORLog::Error);
    }
}

void takeProjectionMessage(void*, int level, const char* text) {
    writeMessage("PROJ", QString::fromUtf8(text), level == PJ_LOG_ERROR ? QUORLog::Error : QUORLog::Debug);
}

class LogOutputWindow : public vtkOutputWindow {
public:
    static LogOutputWindow* New();
    vtkTypeMacro(LogOutputWindow, vtkOutputWindow)

    void DisplayText(const char* text) override {
        writeMessage("VTK", QString::fromUtf8(text), QUORLog::Notice);
    }
    void DisplayErrorText(const char* text) override {
        writeMessage("VTK", QString::fromUtf8(text), QUORLog::Error);
    }
    void DisplayWarningText(const char* text) override {
        writeMessage("VTK", QString::fromUtf8(text), QUORLog::Warning);
    }
    void DisplayGenericWarningText(const char* text) override { DisplayWarningText(text); }
    void DisplayDebugText(const char* text) override {
        writeMessage("VTK", QString::fromUtf8(text), QUORLog::Debug);
    }
};

vtkStandardNewMacro(LogOutputWindow);

} // namespace

namespace QUORToolMessages {

void install() {
    qInstallMessageHandler(takeToolkitMessage);
    proj_log_func(nullptr, nullptr, takeProjectionMessage);
    const vtkNew<LogOutputWindow> window;
    vtkOutputWindow::SetInstance(window);
    vtkLogger::SetStderrVerbosity(vtkLogger::VERBOSITY_OFF);
}

} // namespace QUORToolMessages
