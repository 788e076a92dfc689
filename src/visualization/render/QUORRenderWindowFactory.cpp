// SPDX-License-Identifier: MIT
#include "QUORRenderWindowFactory.h"

#include "QUOREglDisplay.h"
#include "QUOREglRenderWindow.h"
#include "QUORLog.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <vtkCallbackCommand.h>
#include <vtkCommand.h>
#include <vtkNew.h>
#include <vtkXOpenGLRenderWindow.h>

#include <cstdlib>
#include <unistd.h>

// Last: the X headers define words such as None and Bool.
#include <X11/Xlib.h>

namespace {

/// The driver keeps compiled shaders there, which saves a good part of the first image's time.
void provideShaderCache() {
    if (qEnvironmentVariableIsSet("MESA_SHADER_CACHE_DIR")) {
        return;
    }
    const QString root = QDir::homePath() + QStringLiteral("/.quor3d");
    const QString cache = root + QStringLiteral("/cache");
    const auto mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                      QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QDir().mkdir(root, mode);
    QDir().mkdir(cache, mode);
    qputenv("MESA_SHADER_CACHE_DIR", QFile::encodeName(cache));
}

/// The display library ends the process when this returns, and knows no way back.
int endWithoutDisplay(Display*) {
    QUORLog::Instance().logError(
        QStringLiteral("The X server has ended, and the service with it: start it again, or give it EGL"));
    ::_exit(EXIT_FAILURE);
}

/// The X display that the environment names, when it answers and knows OpenGL: the window's own code ends
/// the process where it does not. Kept open, since a server may restart when its last client leaves.
Display* findXDisplay() {
    static Display* display = nullptr;
    if (display == nullptr && !qEnvironmentVariableIsEmpty("DISPLAY")) {
        display = XOpenDisplay(nullptr);
        XSetIOErrorHandler(endWithoutDisplay);
    }
    int opcode = 0;
    int event = 0;
    int error = 0;
    const bool usable = display != nullptr && XQueryExtension(display, "GLX", &opcode, &event, &error);
    return usable ? display : nullptr;
}

vtkSmartPointer<vtkOpenGLRenderWindow> createXWindow(Display* display) {
    vtkNew<vtkXOpenGLRenderWindow> window;
    window->SetDisplayId(display);
    // With an observer of this event, a context that cannot be made is reported instead of aborting.
    vtkNew<vtkCallbackCommand> ignored;
    window->AddObserver(vtkCommand::ExitEvent, ignored);
    window->SetShowWindow(false);
    window->SetOffScreenRendering(1);
    window->SetMultiSamples(0);
    window->Initialize();
    return window->SupportsOpenGL() ? window.Get() : nullptr;
}

} // namespace

vtkSmartPointer<vtkOpenGLRenderWindow> QUORRenderWindowFactory::create(QString& error) {
    provideShaderCache();
    error = QUOREglDisplay::Instance().getError();
    if (QUOREglDisplay::Instance().isOpen()) {
        vtkNew<QUOREglRenderWindow> window;
        if (window->SupportsOpenGL()) {
            return window.Get();
        }
        error = QStringLiteral("EGL gives no OpenGL 3.2 context");
    }
    Display* display = findXDisplay();
    if (display == nullptr) {
        error += QStringLiteral("; no X display with OpenGL either");
        return nullptr;
    }
    vtkSmartPointer<vtkOpenGLRenderWindow> window = createXWindow(display);
    error = window != nullptr ? QString() : error + QStringLiteral("; the X display gives no context either");
    return window;
}

bool QUORRenderWindowFactory::isHardware(vtkOpenGLRenderWindow* window) {
    static const QRegularExpression software(QStringLiteral("llvmpipe|softpipe|swrast|software"),
                                             QRegularExpression::CaseInsensitiveOption);
    return window->IsDirect() != 0 && !describe(window).contains(software);
}

QString QUORRenderWindowFactory::describe(vtkOpenGLRenderWindow* window) {
    QStringList lines = QString::fromUtf8(window->ReportCapabilities()).split(QLatin1Char('\n'));
    lines.removeIf([](const QString& line) {
        return !line.startsWith(QStringLiteral("OpenGL ")) || line.startsWith(QStringLiteral("OpenGL ext"));
    });
    return lines.join(QStringLiteral(", "));
}
