-- Operators, inheritance by __index, and guarded tables.
local Vector = {}
Vector.__index = Vector
local function vector(x, y) return setmetatable({x = x, y = y}, Vector) end
Vector.__add = function(a, b) return vector(a.x + b.x, a.y + b.y) end
Vector.__eq = function(a, b) return a.x == b.x and a.y == b.y end
Vector.__lt = function(a, b) return a.x < b.x end
Vector.__len = function() return 2 end
Vector.__call = function(v, factor) return vector(v.x * factor, v.y * factor) end
Vector.__tostring = function(v) return "(" .. v.x .. ", " .. v.y .. ")" end
Vector.__concat = function(a, b) return tostring(a) .. tostring(b) end
function Vector:norm() return (self.x ^ 2 + self.y ^ 2) ^ 0.5 end

local sum = vector(1, 2) + vector(2, 2)
assert(sum == vector(3, 4) and sum:norm() == 5 and #sum == 2)
assert(vector(1, 0) < vector(2, 0))
assert(sum(2) .. "!" == "(6, 8)!")

local constants = setmetatable({}, {__index = {pi = 3}, __newindex = function(_, k) error(k .. " is constant", 0) end})
local ok, message = pcall(function() constants.pi = 4 end)
assert(not ok and message == "pi is constant" and constants.pi == 3)

local derived = setmetatable({}, {__index = setmetatable({own = 1}, {__index = function(_, k) return k .. "?" end})})
assert(derived.own == 1 and derived.other == "other?" and rawget(derived, "own") == nil)
local iterated = {}
for k, v in pairs(setmetatable({}, {__pairs = function() return next, {a = 1}, nil end})) do iterated[k] = v end
assert(iterated.a == 1)
result = "passed"
