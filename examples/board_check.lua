-- SPDX-License-Identifier: Apache-2.0
-- SPDX-FileCopyrightText: 2026 the K7SAL authors
-- What a new board must have: "k7sal lua board_check.lua [MEMORY_MIB [CORES]]".
local passed = true
local function check(what, good, found)
    print((good and "ok      " or "FAILED  ") .. what .. ": " .. tostring(found))
    passed = passed and good
end

local megabytes, disks, up = sal.memory().mem_total_kib / 1024, {}, {}
for _, disk in ipairs(sal.block_devices()) do disks[#disks + 1] = disk.name end
for _, interface in ipairs(sal.network_interfaces()) do
    if interface.state ~= "down" then up[#up + 1] = interface.name .. " " .. (interface.ipv4 or "without address") end
end
check("memory in MiB", megabytes >= tonumber(arg[1] or 64), math.floor(megabytes))
check("cores", sal.processor().online_count >= tonumber(arg[2] or 1), sal.processor().online_count)
check("kernel", sal.host().kernel_release ~= nil, sal.host().kernel_release)
check("up for seconds", sal.host().uptime_seconds > 0, sal.host().uptime_seconds)
check("disks", true, table.concat(disks, ", "))
check("interfaces", #up > 0, table.concat(up, ", "))
for _, sensor in ipairs(sal.sensors() or {}) do check(sensor.id, not sensor.alarm, sensor.value) end
return passed
