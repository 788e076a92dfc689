// SPDX-License-Identifier: MIT
#pragma once

/// What has to hold for the whole process before the toolkit or the log is used. Main thread only, no
/// thread may run yet: the environment is changed.
namespace QUORProcessSetup {

/// Neither a reader that goes away nor a limit of file sizes ends the process, descriptors 0 to 2 are open,
/// HOME is set, the toolkit needs no display and has a runtime directory of its own, compiled shaders are
/// kept in the user's cache, and paths in the environment are absolute. To be called before the toolkit's
/// application object is made.
void beforeToolkit();

/// The decimal point of the C library is "." whatever the user's locale says. The toolkit's application
/// object sets the user's locale, so this follows its construction.
void afterToolkit();

/// From here on a process that a fatal signal ends (a failed assertion of a library, memory that is not
/// there) says so in the log first.
void reportFatalSignals();

/// Throws a std::runtime_error that says what to do when the process may have too little address space for
/// OpenGL and the threads of its libraries, which end the process from inside when memory is refused.
void requireAddressSpace();

/// The null device onto descriptors 0, 1 and 2, so that no later file or socket takes their numbers.
void detachStandardStreams();

} // namespace QUORProcessSetup
