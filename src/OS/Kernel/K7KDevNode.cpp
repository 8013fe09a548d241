// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Number of a Linux device.
#include "OS/Kernel/K7KDevNode.h"

#include "Core/K7Cast.h"
#include "Foundation/J3StringTokenizer.h"

#include <vector>

namespace Kivo {

namespace {

// Why a text is refused; raised and caught inside fromString().
constexpr int EMPTY_TEXT = 1;
constexpr int WRONG_TOKEN_COUNT = 2;
constexpr int FIELD_REJECTED = 3;

constexpr std::size_t FIELD_COUNT = 2;

std::vector<J3String> fieldsOf(const J3String& text)
{
    if (text.isEmpty())
        throw EMPTY_TEXT;
    std::vector<J3String> tokens;
    J3StringTokenizer tokenizer(text, L".\n", false);
    for (J3String token; tokens.size() <= FIELD_COUNT && tokenizer.getToken(&token);)
        tokens.push_back(token);
    if (tokens.size() != FIELD_COUNT)
        throw WRONG_TOKEN_COUNT;
    return tokens;
}

} // namespace

K7KDevNode* K7KDevNode::clone() const { return new K7KDevNode(*this); }

J3String K7KDevNode::toString() const { return J3String().format(L"%u.%u", major(), minor()); }

bool K7KDevNode::fromString(const J3String& text)
{
    try {
        int32 index = 0;
        for (const J3String& field : fieldsOf(text)) {
            uint8 number = 0;
            K7::castFromThrowable(&number, field);
            if (!setField(index++, number))
                throw FIELD_REJECTED;
        }
        return true;
    } catch (int) {
        makeInvalid();
    } catch (const J3Exception&) {
        makeInvalid();
    }
    return false;
}

bool K7KDevNode::fromString(const char* text) { return fromString(J3String(text)); }

void K7KDevNode::set(uint32 major, uint32 minor)
{
    _packed = (major & K7_MAJOR_MASK) << K7_MINOR_BITS | (minor & K7_MINOR_MASK);
}

bool K7KDevNode::setField(int32 index, int32 value)
{
    if (value < 0 || index < 0 || index > 1)
        return false;
    index == 0 ? setMajor(static_cast<uint32>(value)) : setMinor(static_cast<uint32>(value));
    return true;
}

} // namespace Kivo
