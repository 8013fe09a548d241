-- Any number of arguments and results, holes included.
local function pack(...) return {n = select("#", ...), ...} end
local packed = pack(1, nil, 3, nil)
assert(packed.n == 4 and packed[3] == 3)
assert(select("#", table.unpack(packed, 1, packed.n)) == 4)
assert(select(-1, "a", "b") == "b")

local function sum(...)
    local total = 0
    for _, value in ipairs({...}) do total = total + value end
    return total, ...
end
assert(select("#", sum(1, 2, 3)) == 4 and (sum(1, 2, 3)) == 6)
local first, rest = (function(a, ...) return a, {...} end)("x", "y", "z")
assert(first == "x" and rest[2] == "z")
assert(string.format("%s-%03d", "eth", 7) == "eth-007")
local function tail(n, ...) if n == 0 then return ... end return tail(n - 1, ...) end
assert(tail(100000, "end") == "end")
result = "passed"
