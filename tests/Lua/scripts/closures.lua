-- Closures share and keep their variables.
local function counter(start)
    local count = start
    local function step(by) count = count + (by or 1) return count end
    return step, function() return count end
end
local step, read = counter(10)
local other = counter(0)
step() step(5) other()
assert(read() == 16)

local loop = {}
for i = 1, 3 do loop[i] = function() i = i + 1 return i end end
assert(loop[1]() == 2 and loop[1]() == 3 and loop[2]() == 3)

local function fib(n) return n < 2 and n or fib(n - 1) + fib(n - 2) end
assert(fib(15) == 610)
result = "passed"
