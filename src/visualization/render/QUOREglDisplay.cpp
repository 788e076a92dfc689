// SPDX-License-Identifier: MIT
#include "QUOREglDisplay.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <array>
#include <cstring>
#include <vector>

namespace {

constexpr std::array<EGLint, 13> CONFIG_ATTRIBUTES{EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                                   EGL_RED_SIZE,     8, EGL_GREEN_SIZE,      8,
                                                   EGL_BLUE_SIZE,    8, EGL_DEPTH_SIZE,      24,
                                                   EGL_NONE};
constexpr std::array<EGLint, 7> CONTEXT_ATTRIBUTES{EGL_CONTEXT_MAJOR_VERSION,
                                                   3,
                                                   EGL_CONTEXT_MINOR_VERSION,
                                                   2,
                                                   EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                                   EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                                   EGL_NONE};

bool hasExtension(const char* extensions, const char* name) {
    return extensions != nullptr && std::strstr(extensions, name) != nullptr;
}

template <typename Function>
Function entryPoint(const char* name) {
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

/// The graphics cards, best first as EGL lists them; software devices are left out.
std::vector<EGLDeviceEXT> hardwareDevices() {
    const auto query = entryPoint<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    const auto text = entryPoint<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
    EGLint count = 0;
    if (query == nullptr || text == nullptr || !query(0, nullptr, &count) || count <= 0) {
        return {};
    }
    std::vector<EGLDeviceEXT> devices(std::size_t(count), nullptr);
    if (!query(count, devices.data(), &count)) {
        return {};
    }
    devices.resize(std::size_t(count));
    std::erase_if(devices, [&](EGLDeviceEXT device) {
        return hasExtension(text(device, EGL_EXTENSIONS), "EGL_MESA_device_software");
    });
    return devices;
}

} // namespace

const QUOREglDisplay& QUOREglDisplay::Instance() {
    static const QUOREglDisplay display;
    return display;
}

QUOREglDisplay::QUOREglDisplay() {
    const char* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const auto platformDisplay = entryPoint<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    if (platformDisplay == nullptr || !hasExtension(extensions, "EGL_EXT_platform_base")) {
        _error = QStringLiteral("EGL has no platform displays");
        return;
    }
    if (hasExtension(extensions, "EGL_EXT_platform_device")) {
        for (EGLDeviceEXT device : hardwareDevices()) {
            if (open(platformDisplay(EGL_PLATFORM_DEVICE_EXT, device, nullptr))) {
                return;
            }
        }
    }
    if (!hasExtension(extensions, "EGL_MESA_platform_surfaceless")) {
        _error = QStringLiteral("EGL has no usable device and no surfaceless platform");
    } else if (!open(platformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr))) {
        _error = QStringLiteral("EGL gives no OpenGL 3.2 context, error 0x%1").arg(eglGetError(), 0, 16);
    }
}

bool QUOREglDisplay::open(void* display) {
    EGLint count = 0;
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) {
        return false;
    }
    if (!eglBindAPI(EGL_OPENGL_API) ||
        !eglChooseConfig(display, CONFIG_ATTRIBUTES.data(), &_config, 1, &count) || count < 1) {
        return false;
    }
    _display = display;
    EGLContext context = createContext();
    const bool usable =
        context != EGL_NO_CONTEXT && eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context);
    if (context != EGL_NO_CONTEXT) {
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display, context);
    }
    if (!usable) {
        _display = nullptr;
    }
    return usable;
}

void* QUOREglDisplay::createContext() const {
    if (!eglBindAPI(EGL_OPENGL_API)) {
        return nullptr;
    }
    return eglCreateContext(_display, _config, EGL_NO_CONTEXT, CONTEXT_ATTRIBUTES.data());
}
