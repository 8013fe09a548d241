// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The class around every system utility, and what all of them share: the system root and the last failure.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3String.h"

#include <vector>

namespace Kivo {

/// The system utilities, one nested class of static operations a field. `OS/System/K7SystemUtil.h` brings them all.
class K7SAL_API K7SystemUtil {
public:
    class Attribute;
    class Shell;
    class OS;
    class Memory;
    class CPU;
    class Misc;
    class PCI;
    class DriverModule;
    class Debugging;
    class Network;
    class SCSI;
    class USB;
    class FS;
    class ATA;

    K7SystemUtil() = delete;

    /// Read a captured tree instead of this machine: put @p directory before every absolute path that the library reads
    /// about the system, and before the resolver file that it writes. Symbolic links of the tree stay inside it, and
    /// only regular files and directories of it are opened.
    ///
    /// Effects (commands, mounts, device nodes) stay the running machine's, except that killProcess() does nothing;
    /// queries that only a live kernel can answer fail with the reason "needs the live system".
    /// @param directory the tree's top; empty, the default, for the running system
    /// @return false, with the old root in force, when the directory cannot be opened
    /// *Threads*: set it before other threads call in.
    static bool setSystemRoot(const J3String& directory);

    /// The directory that setSystemRoot() was given last, empty for the running system.
    [[nodiscard]] static J3String systemRoot();

    /// Why an operation failed.
    struct Failure {
        J3String operation; ///< the operation that was called, "Network::getSubnetMask"; empty when nothing has failed
        J3String reason;    ///< the first thing inside it that failed, "ioctl(SIOCGIFNETMASK) failed"
        int32 errorCode;    ///< the errno behind it, 0 when no system call failed
        J3String subject{}; ///< the path, interface or device that it was about; empty when there is none
    };

    /// The calling thread's latest failure.
    ///
    /// Every operation that can fail clears it when it begins and sets it when it fails; one that calls others tells
    /// the innermost reason under its own name. An answer of "no" or "none" is no failure.
    [[nodiscard]] static Failure lastFailure();

    /// What is read below the system root.
    enum ReadKind { READ_FILE, READ_LINK, READ_DIRECTORY };

    /// Told of every file, link and directory that the library opens below the system root, by its path without it.
    using ReadObserver = void (*)(const char* path, ReadKind kind);

    /// The same with a pointer of the host's own before them.
    using ContextReadObserver = void (*)(void* context, const char* path, ReadKind kind);

    /// Watch what the library reads, for example to copy just that from a machine; null ends it.
    /// @return the observer that was replaced, null for none and for one with a context
    /// *Threads*: safe at any time; the observer is called on the reading thread, and a read under way may still reach
    /// the old one.
    static ReadObserver setReadObserver(ReadObserver observer);

    /// The same with an observer that is given @p context, which must outlive every read.
    static void setReadObserver(ContextReadObserver observer, void* context);

    /// Read a whole text file below the system root.
    /// @param path absolute, without the root
    /// @param text takes the contents
    /// @return false, with @p text untouched, when it cannot be opened or read or is larger than 16 MiB (EFBIG)
    static bool readFile(const J3String& path, J3String* text);

    /// Read the target of a symbolic link below the system root, as it stands. @return false when it cannot be read
    static bool readLink(const J3String& path, J3String* target);

    /// List the names in a directory below the system root, without "." and "..", in ascending order.
    /// @return false, with @p names untouched, when it cannot be read or holds more than 1,048,576 (EOVERFLOW)
    static bool listDirectory(const J3String& path, std::vector<J3String>* names);
};

} // namespace Kivo
