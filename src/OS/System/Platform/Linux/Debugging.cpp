// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Switches of the kernel's trace recorder.
#include "OS/System/Debugging.h"

#include "Foundation/J3Time.h"
#include "Foundation/J3TimeFormatter.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Shell.h"

#include <ctime>

namespace Kivo {

namespace {

void requireRecorder(int32 id) { require(id == K7SystemUtil::Debugging::DT10, "no such recorder", std::to_string(id)); }

bool control(const char* operation, int32 id, const char* command)
{
    return attempt(operation, [&] {
        requireRecorder(id);
        return K7SystemUtil::Shell::runCommand(command) == 0;
    });
}

} // namespace

bool K7SystemUtil::Debugging::init(int32 id)
{
    return attempt("Debugging::init", [id] {
        start(id);
        return false;
    });
}

bool K7SystemUtil::Debugging::cleanup(int32 id)
{
    return attempt("Debugging::cleanup", [id] {
        stop(id);
        return false;
    });
}

bool K7SystemUtil::Debugging::start(int32 id) { return control("Debugging::start", id, "echo c > /proc/dt10proc"); }

bool K7SystemUtil::Debugging::stop(int32 id) { return control("Debugging::stop", id, "echo 0 > /proc/dt10proc"); }

bool K7SystemUtil::Debugging::isWorking(int32 id)
{
    return attempt("Debugging::isWorking", [id] {
        requireRecorder(id);
        SystemFile status("/proc/dt10proc_status");
        status.opened();
        char state[1];
        return status.readSome(state, sizeof state) == "1";
    });
}

bool K7SystemUtil::Debugging::dumpTo(int32 id, const J3String& directory)
{
    return attempt("Debugging::dumpTo", [&] {
        requireRecorder(id);
        const J3String stamp = J3TimeFormatter(L"%Y%m%d%H%M%S").formatTime(J3Time::from_time_t(std::time(nullptr)));
        J3String path;
        path.format(L"%@/dt10_%@.dat", &directory, &stamp);
        return Shell::runCommand(L"ProcFileOutput %@", &path) == 0;
    });
}

} // namespace Kivo
