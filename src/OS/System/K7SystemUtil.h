// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// All system utilities.
#pragma once

#include "OS/System/ATA.h"
#include "OS/System/Attribute.h"
#include "OS/System/CPU.h"
#include "OS/System/Debugging.h"
#include "OS/System/DriverModule.h"
#include "OS/System/FS.h"
#include "OS/System/K7SystemUtilClass.h"
#include "OS/System/Memory.h"
#include "OS/System/Misc.h"
#include "OS/System/Network.h"
#include "OS/System/OS.h"
#include "OS/System/PCI.h"
#include "OS/System/SCSI.h"
#include "OS/System/Shell.h"
#include "OS/System/USB.h"
