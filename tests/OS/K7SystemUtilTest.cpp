// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The system root, what it keeps out, and the last failure of every operation.
#include "OS/System/K7SystemUtil.h"

#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include <cerrno>
#include <functional>

#include <sys/mount.h>
#include <sys/stat.h>

using namespace Kivo;
using namespace K7Test;
using Util = K7SystemUtil;

namespace {

/// What an operation does to the last failure; its name is the one that the failure must carry.
struct Case {
    const char* operation;
    std::function<void()> call;
    std::string subject;
    int errorCode = 0;
};

void run(const std::function<void()>& call)
{
    try {
        call();
    } catch (const J3String&) {
    } catch (int) {
    }
}

K7Version s_version;
std::vector<int32> s_ids;
std::vector<J3String> s_texts;
std::vector<Util::CPU::Interrupt> s_interrupts;
std::vector<Util::Memory::Counter> s_counters;
J3String s_text;
std::string s_bytes;
int64 s_number;
bool s_flag;

} // namespace

TEST(K7SystemUtilCaptured, EveryFailureTellsOperationReasonAndSubject)
{
    const Case cases[] = {
        {"setSystemRoot", [] { Util::setSystemRoot(L"/no/such"); }, "/no/such", ENOENT},
        {"readFile", [] { Util::readFile(L"/a", &s_text); }, "/a", ENOENT},
        {"readLink", [] { Util::readLink(L"/a", &s_text); }, "/a", ENOENT},
        {"listDirectory", [] { Util::listDirectory(L"/a", &s_texts); }, "/a", ENOENT},
        {"Attribute::readText", [] { Util::Attribute::readText("/a", &s_bytes); }, "/a", ENOENT},
        {"Attribute::readNumber", [] { Util::Attribute::readNumber("/word", &s_number); }, "/word"},
        {"Attribute::readFlag", [] { Util::Attribute::readFlag("/word", &s_flag); }, "/word"},
        {"Attribute::readLinkName", [] { Util::Attribute::readLinkName("/word", &s_bytes); }, "/word", EINVAL},
        {"Attribute::readContents", [] { Util::Attribute::readContents("/a", &s_bytes); }, "/a", ENOENT},
        {"Attribute::listNames", [] { Util::Attribute::listNames("/word", nullptr); }, ""},
        {"OS::getKernelVersion", [] { Util::OS::getKernelVersion(&s_version); }, "/proc/version", ENOENT},
        {"OS::systemUptime", [] { static_cast<void>(Util::OS::systemUptime()); }, "/proc/uptime", ENOENT},
        {"OS::applyTimeToShell", [] { Util::OS::applyTimeToShell(); }, ""},
        {"Memory::refresh", [] { Util::Memory::refresh(); }, "/proc/meminfo", ENOENT},
        {"Memory::counterOf", [] { Util::Memory::counterOf(L"SwapFree"); }, "/proc/meminfo", ENOENT},
        {"Memory::readCounters", [] { Util::Memory::readCounters(&s_counters); }, "/proc/meminfo", ENOENT},
        {"Memory::dropSystemCachedBuffers", [] { Util::Memory::dropSystemCachedBuffers(); }, ""},
        {"CPU::getTempValue", [] { Util::CPU::getTempValue(nullptr); }, ""},
        {"CPU::coreCount", [] { Util::CPU::coreCount(); }, "/sys/devices/system/cpu/present", ENOENT},
        {"CPU::interruptCountOf", [] { Util::CPU::interruptCountOf(L"1"); }, "/proc/interrupts", ENOENT},
        {"CPU::readInterrupts", [] { Util::CPU::readInterrupts(&s_interrupts); }, "/proc/interrupts", ENOENT},
        {"CPU::readLineFromProcInterrupts", [] { Util::CPU::readLineFromProcInterrupts(&s_texts, nullptr); }, ""},
        {"PCI::updatePciDeviceInfo", [] { Util::PCI::updatePciDeviceInfo(); }, Util::PCI::PCI_DEVICE_INFO_PATH, ENOENT},
        {"PCI::rescan", [] { Util::PCI::rescan(); }, Util::PCI::PCI_DEVICE_INFO_PATH, ENOENT},
        {"DriverModule::load", [] { Util::DriverModule::load(""); }, ""},
        {"Debugging::start", [] { Util::Debugging::start(7); }, "7"},
        {"Debugging::init", [] { Util::Debugging::init(0); }, ""},
        {"Debugging::isWorking", [] { Util::Debugging::isWorking(0); }, "/proc/dt10proc_status", ENOENT},
        {"Shell::runCommand", [] { Util::Shell::runCommand("a"); }, ""},
        {"Shell::runCommandFromShell", [] { Util::Shell::runCommandFromShell("a", nullptr); }, ""},
        {"Shell::runCommandEx", [] { Util::Shell::runCommandEx("exit 3"); }, "exit 3"},
        {"Shell::readProcessId", [] { Util::Shell::readProcessId("/a.pid"); }, "/a.pid", ENOENT},
        {"Shell::listProcessIds", [] { Util::Shell::listProcessIds(&s_ids); }, "/proc", ENOENT},
        {"Shell::getProcessId", [] { Util::Shell::getProcessId("a"); }, "/proc", ENOENT},
        {"Shell::getProcessIds", [] { Util::Shell::getProcessIds("a", &s_ids); }, "/proc", ENOENT},
        {"Shell::isAliveProcess", [] { Util::Shell::isAliveProcess("a", nullptr, -1); }, "/proc", ENOENT},
        {"Shell::killProcess", [] { Util::Shell::killProcess("a"); }, ""},
    };
    TemporaryTree tree;
    tree.file("/word", "word\n");
    for (const Case& failing : cases) {
        run(failing.call);
        const Util::Failure failure = Util::lastFailure();
        EXPECT_EQ(failure.operation, J3String(failing.operation));
        EXPECT_FALSE(failure.reason.isEmpty()) << failing.operation;
        EXPECT_EQ(failure.subject, J3String(failing.subject.c_str())) << failing.operation;
        EXPECT_EQ(failure.errorCode, failing.errorCode) << failing.operation;
    }
}

TEST(K7SystemUtilCaptured, AnswersLeaveNoFailure)
{
    TemporaryTree tree;
    tree.file("/proc/1/cmdline", "init").file("/word", "word").file("/proc/dt10proc_status", "0");
    const std::function<void()> calls[] = {
        [] { EXPECT_EQ(Util::Shell::getProcessId("none"), -1); },
        [] { EXPECT_TRUE(Util::Shell::getProcessIds("none", &s_ids)); },
        [] { EXPECT_FALSE(Util::Shell::isAliveProcess("none", "/missing.pid", 0)); },
        [] { EXPECT_FALSE(Util::Debugging::isWorking(0)); },
        [] { EXPECT_TRUE(Util::listDirectory(L"/proc/1", &s_texts)); },
        [] { EXPECT_EQ(Util::Shell::runCommandEx("true"), 0); },
    };
    for (const auto& call : calls) {
        EXPECT_FALSE(Util::readFile(L"/missing", &s_text));
        call();
        EXPECT_EQ(Util::lastFailure().operation, L"");
    }
}

TEST(K7SystemUtilCaptured, NestedOperationsKeepTheInnermostReasonUnderTheOutermostName)
{
    TemporaryTree tree;
    RecordingRunner runner;
    runner.result = 3;
    EXPECT_FALSE(Util::Debugging::init(0)); // start(), and runCommand() in it
    EXPECT_EQ(Util::lastFailure().reason, L"the command gave 3");
    EXPECT_EQ(Util::lastFailure().subject, L"echo c > /proc/dt10proc");
    runner.behaviour = [](const std::string&, auto*) { return Util::readFile(L"/deepest", &s_text) ? 0 : 3; };
    EXPECT_FALSE(Util::Debugging::init(0));
    EXPECT_EQ(Util::lastFailure().operation, L"Debugging::init");
    EXPECT_EQ(Util::lastFailure().subject, L"/deepest");
    runner.behaviour = [](const std::string&, auto*) { return Util::readFile(L"/deepest", &s_text) ? 3 : 0; };
    EXPECT_TRUE(Util::Debugging::start(0));
    EXPECT_EQ(Util::lastFailure().operation, L"");
}

/// A captured tree comes from outside: none of its links may lead out of it.
TEST(SystemRootCaptured, KeepsEveryPathInside)
{
    TemporaryTree outside(false);
    const std::string secret = outside.file("/secret", "secret").real("/secret");
    TemporaryTree tree;
    tree.link("/absolute", secret).link("/relative", "../../../../../../../.." + secret).link("/loop", "loop");
    tree.file("/etc/value", "inside").directory("/empty").link("/inside", "/etc/value").link("/up", "../../etc");
    tree.link("/a/b/twice", "../../up/../etc/value").link("/through", "etc/value/more");
    tree.file("/chain0", "inside");
    for (int i = 1; i <= 41; ++i)
        tree.link("/chain" + std::to_string(i), "chain" + std::to_string(i - 1));
    const std::pair<const wchar_t*, int> refused[] = {
        {L"/absolute", ENOENT}, {L"/relative", ENOENT}, {L"/loop", ELOOP},         {L"/empty", EISDIR},
        {L"/missing", ENOENT},  {L"", ENOENT},          {L"/etc/value/", ENOTDIR}, {L"/through", ENOTDIR},
        {L"/../..", EISDIR},    {L"/..", EISDIR},       {L"/chain41", ELOOP}};
    for (const auto& [path, error] : refused) {
        J3String text(L"unchanged");
        EXPECT_FALSE(Util::readFile(path, &text));
        EXPECT_EQ(Util::lastFailure().errorCode, error) << J3String(path).to_string();
        EXPECT_EQ(text, L"unchanged");
    }
    for (const wchar_t* path :
         {L"/inside", L"/up/value", L"/a/b/twice", L"/./a/../etc//value", L"/../etc/value", L"/chain40"}) {
        EXPECT_TRUE(Util::readFile(path, &s_text)) << J3String(path).to_string();
        EXPECT_EQ(s_text, L"inside");
    }
    EXPECT_TRUE(Util::readLink(L"/inside", &s_text));
    EXPECT_EQ(s_text, L"/etc/value");
    EXPECT_TRUE(Util::listDirectory(L"/a/../up/", &s_texts));
    EXPECT_EQ(s_texts, std::vector<J3String>{L"value"});
}

TEST(SystemRootCaptured, StaysWhenTheNewOneCannotBeOpened)
{
    TemporaryTree tree;
    tree.file("/value", "inside");
    const J3String root = Util::systemRoot();
    EXPECT_FALSE(Util::setSystemRoot(L"/no/such/directory"));
    EXPECT_EQ(Util::systemRoot(), root);
    EXPECT_TRUE(Util::readFile(L"/value", &s_text));
}

TEST(SystemRootLive, OpensRegularFilesAndDirectoriesOnly)
{
    K7_REQUIRE_SANDBOX();
    TemporaryTree tree;
    tree.file("/device", "").link("/link", "device");
    ASSERT_EQ(::mkfifo(tree.real("/fifo").c_str(), 0600), 0);
    ASSERT_EQ(::mount("/dev/zero", tree.real("/device").c_str(), nullptr, MS_BIND, nullptr), 0);
    for (const wchar_t* path : {L"/device", L"/link", L"/fifo"}) {
        EXPECT_FALSE(Util::readFile(path, &s_text));
        EXPECT_EQ(Util::lastFailure().reason, L"is not a regular file");
    }
    EXPECT_EQ(::umount(tree.real("/device").c_str()), 0);
}

TEST(SystemRootCaptured, ReadsNoFileOfMoreThan16MiB)
{
    TemporaryTree tree;
    tree.file("/proc/net/route", "Iface\n").file("/exact", "");
    std::filesystem::resize_file(tree.real("/proc/net/route"), std::uintmax_t{4} << 30);
    std::filesystem::resize_file(tree.real("/exact"), 16U << 20U);
    EXPECT_TRUE(Util::Attribute::readContents("/exact", &s_bytes));
    EXPECT_FALSE(Util::Attribute::readContents("/proc/net/route", &s_bytes));
    EXPECT_EQ(Util::lastFailure().errorCode, EFBIG);
    K7IPv4Address gateway;
    EXPECT_FALSE(Util::Network::getGateway("eth0", &gateway)); // reads by lines
    EXPECT_EQ(Util::lastFailure().errorCode, EFBIG);
}
