-- Values travel both ways, errors end the coroutine alone, and pcall() may be suspended within.
local echo = coroutine.create(function(a)
    while true do a = coroutine.yield(a * 2) end
end)
assert(select(2, coroutine.resume(echo, 1)) == 2)
assert(select(2, coroutine.resume(echo, 5)) == 10)
assert(coroutine.status(echo) == "suspended")

local function range(n) return coroutine.wrap(function() for i = 1, n do coroutine.yield(i) end end) end
local total = 0
for i in range(10) do total = total + i end
assert(total == 55)

local failing = coroutine.create(function() coroutine.yield() error("inside", 0) end)
coroutine.resume(failing)
local ok, message = coroutine.resume(failing)
assert(not ok and message == "inside" and coroutine.status(failing) == "dead")

local guarded = coroutine.wrap(function()
    local _, caught = pcall(function() coroutine.yield("waiting") error("late", 0) end)
    return caught
end)
assert(guarded() == "waiting" and guarded() == "late")
assert(select(2, coroutine.running()))
goto done
error("skipped")
::done::
result = "passed"
