// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stand-ins for what a captured machine gives away of its owner.
#include "RedactText.h"

namespace K7Tool {

namespace {

constexpr std::size_t SHORTEST_NAME = 4; ///< shorter ones are replaced where they stand alone, and nowhere else

bool endsWithPart(std::string_view path, std::string_view end)
{
    return path.ends_with(end) && (path.size() == end.size() || path[path.size() - end.size() - 1] == '/');
}

} // namespace

FileForm formOf(std::string_view path)
{
    static constexpr struct {
        const char* end;
        FileForm form;
    } FORMS[] = {
        {"net/route", FileForm::ROUTES},
        {"net/if_inet6", FileForm::IPV6_ENTRIES},
        {"net/ipv6_route", FileForm::IPV6_ROUTES},
        {"kernel/hostname", FileForm::HOST_NAME},
        {"etc/hostname", FileForm::HOST_NAME},
        {"cmdline", FileForm::COMMAND_LINE},
        {"bootargs", FileForm::COMMAND_LINE},
        {"serial", FileForm::SERIAL},
        {"serial_number", FileForm::SERIAL},
        {"serial-number", FileForm::SERIAL},
        {"serial_num", FileForm::SERIAL},
        {"board_serial", FileForm::SERIAL},
        {"chassis_serial", FileForm::SERIAL},
        {"product_serial", FileForm::SERIAL},
        {"product_uuid", FileForm::SERIAL},
        {"machine-id", FileForm::SERIAL},
        {"wwid", FileForm::SERIAL},
        {"cid", FileForm::SERIAL},
        {"vpd_pg80", FileForm::SERIAL},
        {"unique_number", FileForm::SERIAL},
    };
    for (const auto& [end, form] : FORMS)
        if (endsWithPart(path, end))
            return form;
    return FileForm::TEXT;
}

void Redactor::learn(std::string_view text, FileForm form)
{
    switch (form) {
    case FileForm::TEXT:
        return walkText(text, nullptr);
    case FileForm::ROUTES:
        return walkRoutes(text, nullptr);
    case FileForm::IPV6_ENTRIES:
        return walkIpv6(text, nullptr, 2);
    case FileForm::IPV6_ROUTES:
        return walkIpv6(text, nullptr, 1);
    case FileForm::HOST_NAME:
    case FileForm::SERIAL:
        return walkName(text, nullptr, form);
    case FileForm::COMMAND_LINE:
        return walkCommand(text, nullptr);
    }
}

std::string Redactor::redacted(std::string_view text, FileForm form)
{
    std::string out;
    switch (form) {
    case FileForm::TEXT:
        walkText(text, &out);
        break;
    case FileForm::ROUTES:
        walkRoutes(text, &out);
        break;
    case FileForm::IPV6_ENTRIES:
    case FileForm::IPV6_ROUTES:
        walkIpv6(text, &out, 0);
        break;
    case FileForm::HOST_NAME:
    case FileForm::SERIAL:
        walkName(text, &out, form);
        break;
    case FileForm::COMMAND_LINE:
        walkCommand(text, &out);
        break;
    }
    return out;
}

void Redactor::learnNetworks(std::string_view text)
{
    std::vector<IpBytes> addresses;
    std::optional<unsigned> mask;
    TextScanner words(text);
    for (std::string_view word; words.field(&word);) {
        IpBytes address{};
        if (::inet_pton(AF_INET, std::string(word).c_str(), address.data()) != 1)
            continue;
        if (const auto length = maskLength(address))
            mask = length;
        else
            addresses.push_back(address);
    }
    for (const IpBytes& address : addresses)
        _addresses.learnV4(address, mask.value_or(0));
}

void Redactor::keepInPaths(std::string_view path)
{
    TextScanner parts(path);
    for (std::string_view part; parts.field(&part, "/");)
        _pathParts.insert(lowered(part));
}

void Redactor::walkText(std::string_view text, std::string* out)
{
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        const char before = at == 0 ? ' ' : text[at - 1];
        std::size_t taken = 0;
        if (!isAlnum(before) && (isAlnum(rest.front()) || rest.front() == ':')) {
            taken = takeMac(rest, out);
            if (taken == 0)
                taken = takeIpv6(rest, out);
            if (taken == 0 && before != '.')
                taken = takeIpv4(rest, out);
            if (taken == 0)
                taken = takeName(rest, out);
        }
        if (taken == 0 && isAlnum(rest.front())) {
            taken = static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), isAlnum) - rest.begin());
            takeWord(rest.substr(0, taken), out);
        } else if (taken == 0) {
            taken = 1;
            if (out)
                *out += rest.front();
        }
        at += taken;
    }
}

// 00:11:22:33:44:55, 00-11-22-33-44-55, and the 8 and 20 bytes of other networks
std::size_t Redactor::takeMac(std::string_view text, std::string* out)
{
    constexpr std::size_t GROUP = 3;
    if (text.size() < GROUP || (text[2] != ':' && text[2] != '-'))
        return 0;
    const char separator = text[2];
    std::size_t size = 0;
    Bytes mac;
    while (size + 2 <= text.size() && isHexa(text.substr(size, 2), 2)) {
        mac.push_back(bytesOf(text.substr(size, 2)).front());
        size += 2;
        if (size + 1 >= text.size() || text[size] != separator || !isHexaDigit(text[size + 1]))
            break;
        ++size;
    }
    const bool goesOn = size < text.size() && isAlnum(text[size]);
    if (goesOn || (mac.size() != 6 && mac.size() != 8 && mac.size() != 20))
        return 0;
    if (out)
        *out += hexOf(_addresses.mac(mac), hasUpperHexa(text.substr(0, size)), separator);
    else
        _addresses.learnMac(mac);
    return size;
}

std::size_t Redactor::takeIpv6(std::string_view text, std::string* out)
{
    constexpr std::size_t LONGEST = 45;
    const auto isPart = [](char c) { return isHexaDigit(c) || c == ':' || c == '.'; };
    auto size = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPart) - text.begin());
    if (size < text.size() && isAlnum(text[size]))
        return 0;
    IpBytes address{};
    const auto parse = [&] {
        return size <= LONGEST && ::inet_pton(AF_INET6, std::string(text.substr(0, size)).c_str(), address.data()) == 1;
    };
    bool found = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), ':') >= 2 && parse();
    if (!found && size > 2 && (text[size - 1] == ':' || text[size - 1] == '.')) { // the end of a sentence
        --size;
        found = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), ':') >= 2 && parse();
    }
    if (!found)
        return 0;
    if (out) {
        char buffer[INET6_ADDRSTRLEN];
        *out += ::inet_ntop(AF_INET6, _addresses.v6(address).data(), buffer, sizeof buffer);
    } else {
        const auto length = prefixLength(text.substr(size));
        _addresses.learnV6(address);
        _addresses.learnV6(address, std::min(length.value_or(128), 128U));
    }
    return size;
}

std::size_t Redactor::takeIpv4(std::string_view text, std::string* out)
{
    constexpr std::size_t LONGEST = 15;
    const auto isPart = [](char c) { return isDecimalDigit(c) || c == '.'; };
    auto size = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPart) - text.begin());
    if (size > 0 && text[size - 1] == '.')
        --size;
    const bool goesOn =
        size < text.size() && (isLetter(text[size]) || text[size] == '_' ||
                               (text[size] == '-' && size + 1 < text.size() && isLetter(text[size + 1])));
    IpBytes address{};
    if (goesOn || size > LONGEST ||
        ::inet_pton(AF_INET, std::string(text.substr(0, size)).c_str(), address.data()) != 1)
        return 0;
    if (maskLength(address)) {
        if (out)
            *out += text.substr(0, size);
    } else if (out) {
        char buffer[INET_ADDRSTRLEN];
        *out += ::inet_ntop(AF_INET, _addresses.v4(address).data(), buffer, sizeof buffer);
    } else {
        const auto length = prefixLength(text.substr(size));
        _addresses.learnV4(address);
        _addresses.learnV4(address, std::min(length.value_or(32), 32U));
    }
    return size;
}

/// A name or number that was learned, as a whole word.
std::size_t Redactor::takeName(std::string_view text, std::string* out)
{
    if (!out || text.size() < SHORTEST_NAME)
        return 0;
    const auto candidates = _names.find(lowered(text.substr(0, SHORTEST_NAME)));
    if (candidates == _names.end())
        return 0;
    std::string_view longest;
    for (const std::string& name : candidates->second) {
        const bool isThere = text.size() >= name.size() && lowered(text.substr(0, name.size())) == name;
        const bool isWhole = isThere && (text.size() == name.size() || !isAlnum(text[name.size()]));
        if (isWhole && name.size() > longest.size() && !(_hosts.contains(name) && _pathParts.contains(name)))
            longest = name;
    }
    if (!longest.empty())
        *out += _hosts.contains(longest) ? hostStandIn(longest) : serialStandIn(text.substr(0, longest.size()));
    return longest.size();
}

/// A word of letters and digits, which may hold a known MAC address without separators: "enx001122334455".
void Redactor::takeWord(std::string_view word, std::string* out)
{
    constexpr std::size_t DIGITS = 12;
    if (!out)
        return;
    while (!word.empty()) {
        const std::string_view part = word.substr(0, DIGITS);
        if (isHexa(part, DIGITS) && _addresses.knowsMac(bytesOf(part))) {
            *out += hexOf(_addresses.mac(bytesOf(part)), hasUpperHexa(part));
            word.remove_prefix(DIGITS);
        } else {
            *out += word.front();
            word.remove_prefix(1);
        }
    }
}

// eth0	0001A8C0	00000000	0001	0	0	0	00FFFFFF	0	0	0
void Redactor::walkRoutes(std::string_view text, std::string* out)
{
    constexpr std::size_t DESTINATION = 1;
    constexpr std::size_t GATEWAY = 2;
    constexpr std::size_t MASK = 7;
    constexpr std::size_t DIGITS = 8;
    const auto addressOf = [](std::string_view digits) {
        Bytes bytes = bytesOf(digits);
        std::reverse(bytes.begin(), bytes.end());
        return toIpBytes(bytes);
    };
    forEachLine(text, out, [&](std::string_view line) {
        std::optional<IpBytes> destination;
        std::size_t field = 0;
        forEachWord(line, out, isBlank, [&](std::string_view word) {
            const std::size_t index = field++;
            const bool isAddress = isHexa(word, DIGITS);
            if (isAddress && index == MASK && destination && !out) {
                _addresses.learnV4(*destination, maskLength(addressOf(word)).value_or(0));
            } else if (isAddress && (index == DESTINATION || index == GATEWAY)) {
                const IpBytes address = addressOf(word);
                if (index == DESTINATION)
                    destination = address;
                if (out) {
                    const IpBytes standIn = _addresses.v4(address);
                    *out += hexOf({standIn[3], standIn[2], standIn[1], standIn[0]}, true);
                } else {
                    _addresses.learnV4(address);
                }
            } else if (index == 0) {
                walkText(word, out);
            } else if (out) {
                *out += word;
            }
        });
    });
}

// fe8000000000000050540000fe123456 02 40 20 80     eth0
// fe800000000000000000000000000000 40 000...000 00 000...000 00000100 00000001 00000000 00000001     eth0
void Redactor::walkIpv6(std::string_view text, std::string* out, std::size_t lengthField)
{
    constexpr std::size_t DIGITS = 32;
    forEachLine(text, out, [&](std::string_view line) {
        std::optional<IpBytes> first;
        std::size_t field = 0;
        forEachWord(line, out, isBlank, [&](std::string_view word) {
            const std::size_t index = field++;
            if (isHexa(word, DIGITS)) {
                const IpBytes address = toIpBytes(bytesOf(word));
                if (index == 0)
                    first = address;
                if (out) {
                    const IpBytes standIn = _addresses.v6(address);
                    *out += hexOf({standIn.begin(), standIn.end()}, false);
                } else {
                    _addresses.learnV6(address);
                }
            } else if (!out && first && index == lengthField && isHexa(word, 2)) {
                _addresses.learnV6(*first, std::min<unsigned>(bytesOf(word).front(), 128));
            } else if (isHexa(word, word.size())) {
                if (out)
                    *out += word;
            } else {
                walkText(word, out);
            }
        });
    });
}

void Redactor::walkName(std::string_view text, std::string* out, FileForm form)
{
    const bool isHost = form == FileForm::HOST_NAME;
    while (!text.empty()) {
        const auto end = std::find_if(text.begin(), text.end(), [](char c) { return c == '\0' || c == '\n'; });
        const std::string_view name = trimmed({text.begin(), end});
        if (out && !name.empty())
            *out += isHost ? hostStandIn(name) : serialStandIn(name);
        if (!out && !name.empty() && isHost)
            _hosts.insert(lowered(name));
        if (!out)
            learnName(name);
        text = {end, text.end()};
        if (out && !text.empty())
            *out += text.front();
        text.remove_prefix(std::min<std::size_t>(text.size(), 1));
    }
}

void Redactor::learnName(std::string_view name)
{
    if (name.size() >= SHORTEST_NAME && isAlnum(name.front()))
        _names[lowered(name.substr(0, SHORTEST_NAME))].insert(lowered(name));
}

void Redactor::walkCommand(std::string_view text, std::string* out)
{
    const auto isDelimiter = [](char c) { return c == '\0' || isSpace(c); };
    bool isProgram = true;
    forEachWord(text, out, isDelimiter, [&](std::string_view word) {
        const std::size_t equals = word.find('=');
        const bool isNamed = equals != std::string_view::npos;
        if (!out || (isProgram && !isNamed)) {
            walkText(word, out);
        } else {
            const std::string_view value = isNamed ? word.substr(equals + 1) : word;
            const std::size_t number =
                _commandWords.try_emplace(std::string(value), _commandWords.size() + 1).first->second;
            walkText(word.substr(0, word.size() - value.size()), out);
            if (!value.empty())
                *out += "redacted-" + std::to_string(number);
        }
        isProgram = false;
    });
}

/// Letters stay letters and digits digits, so that the length and the form are the serial number's.
std::string Redactor::serialStandIn(std::string_view serial)
{
    auto [entry, isNew] = _standIns.try_emplace(lowered(serial));
    const auto draw = [&](unsigned count) { return static_cast<char>(_addresses.random()() % count); };
    const bool isHexadecimal =
        std::all_of(serial.begin(), serial.end(), [](char c) { return isHexaDigit(c) || c == '-'; });
    const unsigned letters = isHexadecimal ? 6 : 26;
    constexpr int ATTEMPTS = 64;
    for (int attempt = 0; isNew && attempt < ATTEMPTS; ++attempt) {
        std::string& standIn = entry->second;
        standIn = serial;
        for (char& c : standIn) {
            const bool isSmall = c >= 'a' && c <= 'z';
            if (isDecimalDigit(c))
                c = static_cast<char>('0' + draw(10));
            else if (isLetter(c))
                c = static_cast<char>((isSmall ? 'a' : 'A') + draw(letters));
            else if (static_cast<unsigned char>(c) >= 0x7F)
                c = '?';
        }
        isNew = lowered(standIn) == entry->first || !_usedSerials.insert(standIn).second;
    }
    return entry->second;
}

/// "host-1", "host-2.example" for a name with a domain.
std::string Redactor::hostStandIn(std::string_view name)
{
    const auto [entry, isNew] = _standIns.try_emplace(lowered(name));
    if (isNew)
        entry->second = "host-" + std::to_string(_standIns.size()) + (name.find('.') < name.size() ? ".example" : "");
    return entry->second;
}

} // namespace K7Tool
