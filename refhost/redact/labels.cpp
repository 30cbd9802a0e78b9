#include "redact/labels.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "redact/addresses.h"
#include "redact/common.h"
#include "redact/letters.h"

namespace qvhost::redact {

namespace {

// What a label's value has to look like.
enum class Kind {
    serial,   // has a digit, and no words
    number,   // the same; a long one in hexadecimal digits is one however it is divided
    tag,      // what people write on a machine
    address,  // of a network
    host,     // a name or an address
    domain,   // a name with dots, or an address
    user,
    secret,
};

struct Label {
    std::string_view words;  // how it ends; in lower case, with one space between two
    Kind kind;
};

// clang-format off
constexpr auto kLabels = std::to_array<Label>({
    {"serial number", Kind::serial}, {"serial no", Kind::serial}, {"serial num", Kind::serial}, {"serial", Kind::serial},
    {"serialnumber", Kind::serial}, {"serialno", Kind::serial}, {"serial id", Kind::serial}, {"serial nr", Kind::serial},
    {"serialnum", Kind::serial}, {"sn", Kind::serial}, {"s n", Kind::serial}, {"ser no", Kind::serial},
    {"service tag", Kind::serial}, {"servicetag", Kind::serial}, {"express service code", Kind::serial},
    {"serial short", Kind::serial}, {"barcode", Kind::serial}, {"disk identifier", Kind::serial},
    {"unit serial", Kind::serial}, {"device serial", Kind::serial}, {"dev id", Kind::serial},
    {"asset tag", Kind::tag}, {"asset", Kind::tag}, {"assettag", Kind::tag}, {"asset number", Kind::tag},
    {"asset no", Kind::tag}, {"asset tag number", Kind::tag}, {"inventory number", Kind::tag}, {"property tag", Kind::tag},
    {"wwn", Kind::number}, {"wwid", Kind::number}, {"wwnn", Kind::number}, {"wwpn", Kind::number},
    {"world wide name", Kind::number}, {"worldwidename", Kind::number}, {"world wide id", Kind::number},
    {"sas address", Kind::number}, {"sasaddress", Kind::number}, {"sas addr", Kind::number}, {"sas address 0", Kind::number},
    {"sas address 1", Kind::number}, {"lu wwn device id", Kind::number}, {"logical unit id", Kind::number},
    {"naa id", Kind::number}, {"naa", Kind::number}, {"eui64", Kind::number}, {"nguid", Kind::number}, {"euid", Kind::number},
    {"node wwn", Kind::number}, {"port wwn", Kind::number}, {"port guid", Kind::number}, {"node guid", Kind::number},
    {"system image guid", Kind::number}, {"guid", Kind::number}, {"uuid", Kind::number}, {"partuuid", Kind::number},
    {"machine id", Kind::number}, {"machineid", Kind::number}, {"boot id", Kind::number}, {"host id", Kind::number},
    {"ieee eui 64", Kind::number}, {"unique id", Kind::number}, {"unique identifier", Kind::number}, {"array uuid", Kind::number},
    {"mac", Kind::address}, {"mac address", Kind::address}, {"macaddress", Kind::address}, {"mac addr", Kind::address},
    {"hwaddr", Kind::address}, {"hardware address", Kind::address}, {"permanent address", Kind::address},
    {"permaddr", Kind::address}, {"lladdr", Kind::address}, {"ether", Kind::address}, {"ethernet address", Kind::address},
    {"ip", Kind::address}, {"ip address", Kind::address}, {"ipaddress", Kind::address}, {"ip addr", Kind::address},
    {"ipaddr", Kind::address}, {"ipv4", Kind::address}, {"ipv6", Kind::address}, {"ipv4 address", Kind::address},
    {"ipv6 address", Kind::address}, {"inet addr", Kind::address}, {"inet6 addr", Kind::address}, {"gateway", Kind::address},
    {"gateway ip", Kind::address}, {"default gateway", Kind::address}, {"address", Kind::address}, {"addr", Kind::address},
    {"bcast", Kind::address}, {"broadcast", Kind::address}, {"source ip", Kind::address}, {"src", Kind::address},
    {"dst", Kind::address}, {"laddr", Kind::address}, {"saddr", Kind::address}, {"daddr", Kind::address},
    {"hostname", Kind::host}, {"host name", Kind::host}, {"static hostname", Kind::host}, {"computer name", Kind::host},
    {"computername", Kind::host}, {"node name", Kind::host}, {"nodename", Kind::host}, {"fqdn", Kind::host},
    {"system name", Kind::host}, {"rhost", Kind::host}, {"bmc host name", Kind::host}, {"servername", Kind::host},
    {"dns name", Kind::host}, {"dns domain name", Kind::host}, {"domain name", Kind::host}, {"domainname", Kind::host},
    {"loghost", Kind::host}, {"remote host", Kind::host}, {"remotehost", Kind::host}, {"dnsdomain", Kind::host},
    {"host", Kind::domain}, {"domain", Kind::domain}, {"server", Kind::domain}, {"client", Kind::domain},
    {"peer", Kind::domain}, {"dns", Kind::domain}, {"search", Kind::domain}, {"nameserver", Kind::domain},
    {"dns server", Kind::domain}, {"ntp server", Kind::domain}, {"syslog server", Kind::domain}, {"raddr", Kind::domain},
    {"smtp server", Kind::domain}, {"realm", Kind::domain}, {"target", Kind::domain}, {"node", Kind::domain},
    {"user", Kind::user}, {"username", Kind::user}, {"user name", Kind::user}, {"login", Kind::user},
    {"login name", Kind::user}, {"logname", Kind::user}, {"sudo user", Kind::user}, {"ruser", Kind::user},
    {"auid name", Kind::user}, {"account", Kind::user}, {"account name", Kind::user}, {"acct", Kind::user},
    {"run by", Kind::user}, {"created by", Kind::user}, {"operator", Kind::user}, {"userid", Kind::user},
    {"user id", Kind::user}, {"contact", Kind::user}, {"owner", Kind::user}, {"real name", Kind::user}, {"log name", Kind::user},
    {"password", Kind::secret}, {"passwd", Kind::secret}, {"passphrase", Kind::secret}, {"pass", Kind::secret},
    {"pwd", Kind::secret}, {"secret", Kind::secret}, {"token", Kind::secret}, {"api key", Kind::secret},
    {"apikey", Kind::secret}, {"access key", Kind::secret}, {"access key id", Kind::secret}, {"accesskey", Kind::secret},
    {"secret key", Kind::secret}, {"secretkey", Kind::secret}, {"secret access key", Kind::secret},
    {"private key", Kind::secret}, {"privatekey", Kind::secret}, {"auth key", Kind::secret}, {"authkey", Kind::secret},
    {"psk", Kind::secret}, {"pre shared key", Kind::secret}, {"preshared key", Kind::secret}, {"community", Kind::secret},
    {"snmp community string", Kind::secret}, {"community string", Kind::secret}, {"rocommunity", Kind::secret},
    {"rwcommunity", Kind::secret}, {"bindpw", Kind::secret}, {"rootpw", Kind::secret}, {"adminpw", Kind::secret}, {"authtok", Kind::secret}, {"passcode", Kind::secret},
    {"account key", Kind::secret}, {"accountkey", Kind::secret}, {"shared access key", Kind::secret}, {"sharedaccesskey", Kind::secret},
    {"secret id", Kind::secret}, {"kg", Kind::secret}, {"k g", Kind::secret},
    {"kg key", Kind::secret}, {"bmc key", Kind::secret}, {"license key", Kind::secret}, {"licence key", Kind::secret},
    {"activation key", Kind::secret}, {"product key", Kind::secret}, {"credential", Kind::secret},
    {"credentials", Kind::secret}, {"authorization", Kind::secret}, {"x auth token", Kind::secret}, {"cookie", Kind::secret},
    {"set cookie", Kind::secret}, {"session key", Kind::secret}, {"sessionid", Kind::secret}, {"chap secret", Kind::secret},
    {"client secret", Kind::secret}, {"encryption key", Kind::secret}, {"security key", Kind::secret},
    {"shared secret", Kind::secret}, {"auth pass", Kind::secret}, {"authpass", Kind::secret}, {"privpass", Kind::secret},
    {"master key", Kind::secret}, {"master password", Kind::secret}, {"recovery key", Kind::secret}, {"unlock key", Kind::secret}, {"access token", Kind::secret}, {"refresh token", Kind::secret}, {"ldappw", Kind::secret},
});
// clang-format on

constexpr std::size_t kLongestLabel = 48;
constexpr std::size_t kMostWords = 4;
constexpr std::size_t kLongestValue = 512;
constexpr std::size_t kShortestNumber = 3;  // of digits alone

const std::unordered_map<std::string_view, Kind>& labels() {
    static const auto all = [] {
        std::unordered_map<std::string_view, Kind> made;
        for (const auto& label : kLabels) made.emplace(label.words, label.kind);
        return made;
    }();
    return all;
}

// The last letters of labels, so that most separators are passed by quickly: four of a word that has as many, else two.
struct Endings {
    std::bitset<1 << 20> four;
    std::bitset<1 << 10> two;
};

std::size_t last_letters(std::string_view text, std::size_t count) {
    std::size_t letters = 0;
    for (const char c : text.substr(text.size() - count))
        letters = letters << 5 | static_cast<std::size_t>(c & 31);
    return letters;
}

constexpr std::size_t kLongEnding = 4;

const Endings& endings() {
    static const auto all = [] {
        auto made = std::make_unique<Endings>();
        for (const auto& label : kLabels) {
            const auto word = label.words.substr(label.words.rfind(' ') + 1);
            if (word.size() >= kLongEnding)
                made->four.set(last_letters(word, kLongEnding));
            else if (label.words.size() >= 2)
                made->two.set(last_letters(label.words, 2));
        }
        return made;
    }();
    return *all;
}

bool may_end_label(std::string_view text, std::size_t end) {
    if (end < 2 || !is_alnum(text[end - 1])) return false;
    const auto label = text.substr(0, end);
    return (end >= kLongEnding && endings().four[last_letters(label, kLongEnding)]) ||
           endings().two[last_letters(label, 2)] || !is_alnum(text[end - 2]);
}

// "SerialNumber", "serial_number", "Serial Number" become "serial number".
std::string words_of(std::string_view label) {
    std::string words;
    char before = ' ';
    for (const char c : label) {
        const bool begins = is_upper(c) && is_letter(before) && !is_upper(before);
        before = c;
        if (!is_alnum(c)) {
            if (!words.empty() && words.back() != ' ') words += ' ';
            continue;
        }
        if (begins && !words.empty() && words.back() != ' ') words += ' ';
        words += lower(c);
    }
    while (!words.empty() && words.back() == ' ') words.pop_back();
    return words;
}

std::optional<Kind> kind_of_label(std::string_view label) {
    const auto words = words_of(label);
    std::string_view rest = words;
    // The longest ending that is a label.
    std::vector<std::size_t> begins;
    for (std::size_t at = rest.size(); at > 0 && begins.size() < kMostWords;) {
        const auto space = rest.rfind(' ', at - 1);
        begins.push_back(space == std::string_view::npos ? 0 : space + 1);
        if (space == std::string_view::npos) break;
        at = space;
    }
    std::reverse(begins.begin(), begins.end());
    for (const auto begin : begins) {
        if (const auto found = labels().find(rest.substr(begin)); found != labels().end())
            return found->second;
    }
    // "dbpassword", "PGPASSWORD"
    constexpr std::string_view kJoined[] = {"password", "passwd", "passphrase", "authtok"};
    if (std::any_of(std::begin(kJoined), std::end(kJoined),
                    [&](auto one) { return rest.ends_with(one); }))
        return Kind::secret;
    return std::nullopt;
}

bool is_word(std::string_view text) {
    constexpr std::size_t kShortestWord = 3;
    return text.size() >= kShortestWord && std::all_of(text.begin(), text.end(), [](char c) {
               return is_letter(c) && !is_upper(c);
           });
}

bool has_words(std::string_view text) {
    while (!text.empty()) {
        auto end = std::min(text.find_first_of(" /()"), text.size());
        if (is_word(text.substr(0, end))) return true;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return false;
}

std::size_t digits_in(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), is_digit));
}

bool is_number(std::string_view text) { return digits_in(text) == text.size(); }

bool is_serial(std::string_view text) {
    constexpr std::size_t kLongestSerial = 80;
    if (text.size() > kLongestSerial || text.size() < 2 || has_words(text)) return false;
    if (is_number(text)) return text.size() >= kShortestNumber;
    // Without a digit: "CNXPLK".
    if (digits_in(text) == 0)
        return text.size() >= kShortestSearched && std::all_of(text.begin(), text.end(), is_upper);
    return text.find_first_of("{}[]<>\"=") == std::string_view::npos;
}

// The first word of a sentence that is a serial number all the same: "EX12AB was replaced".
bool is_mixed(std::string_view word) {
    return word.size() >= kShortestSearched && is_serial(word) && digits_in(word) < word.size() &&
           word.find('/') == std::string_view::npos;
}

bool is_host_name(std::string_view text, bool needs_dot) {
    if (text.empty() || text.size() > 253 || !(is_alnum(text[0]) || is_wide(text[0]))) return false;
    if (is_number(text)) return false;
    for (const char c : text) {
        if (!is_alnum(c) && !is_wide(c) && c != '-' && c != '.' && c != '_') return false;
    }
    return !needs_dot || looks_like_domain(text, 2);
}

bool is_user_name(std::string_view text) {
    constexpr std::size_t kLongestUser = 64;
    if (text.empty() || text.size() > kLongestUser || is_number(text)) return false;
    return std::all_of(text.begin(), text.end(), [](char c) {
        return is_alnum(c) || is_wide(c) ||
               std::string_view("._-@\\$+").find(c) != std::string_view::npos;
    });
}

bool is_divider(char c) {
    return std::string_view(" \t,;\"'<>()[]{}|&").find(c) != std::string_view::npos;
}

// The first word of the value, without what ends a sentence.
Span first_word(std::string_view text, Span span) {
    std::size_t size = 0;
    while (size < span.size && !is_divider(text[span.at + size])) ++size;
    while (size > 0 &&
           std::string_view(".:").find(text[span.at + size - 1]) != std::string_view::npos)
        --size;
    return {span.at, size};
}

void give(Span span, Class which, Form form, const TakeFound& take) {
    if (span.size > 0) take({span.at, span.size, which, form, true});
}

// "192.0.2.7/24", "fe80::1%eth0/64"
void give_address(std::string_view text, Span span, std::optional<bool> host_needs_dot,
                  const TakeFound& take) {
    auto word = first_word(text, span);
    word.size = std::min(word.size, text.substr(word.at, word.size).find_first_of("/%"));
    auto value = text.substr(word.at, word.size);
    auto form = form_of_address(value, Form::text);
    if (form == Form::text && std::count(value.begin(), value.end(), ':') == 1) {
        word.size = value.find(':');  // a port
        value = text.substr(word.at, word.size);
        form = form_of_address(value, Form::text);
    }
    if (form == Form::text && host_needs_dot && is_host_name(value, *host_needs_dot))
        form = Form::host;
    if (form != Form::text) give(word, Class::network, form, take);
}

void give_number(std::string_view text, Span span, const TakeFound& take) {
    auto word = span;
    auto value = text.substr(word.at, word.size);
    for (const std::string_view prefix : {"naa.", "eui.", "0x", "0X", "uuid."}) {
        if (!value.starts_with(prefix)) continue;
        word = {word.at + prefix.size(), word.size - prefix.size()};
        value.remove_prefix(prefix.size());
    }
    constexpr std::size_t kFewestDigits = 12;
    const auto digits = canonical(Form::hex, value);
    if (digits && digits->size() >= kFewestDigits)
        give(word, Class::serials, Form::hex, take);
    else if (is_serial(value))
        give(word, Class::serials, Form::text, take);
}

// Where the value ends that begins at `at`.
Span value_at(std::string_view text, std::size_t at, char separator) {
    while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
    if (at < text.size() && (text[at] == '"' || text[at] == '\'')) {
        const char quote = text[at];
        std::size_t end = at + 1;
        while (end < text.size() && text[end] != quote && text[end] != '\n')
            end += text[end] == '\\' ? 2U : 1U;
        end = std::min(end, text.size());
        return {at + 1, std::min(end - at - 1, kLongestValue)};
    }
    std::size_t end = at;
    for (; end < text.size() && text[end] != '\n' && end - at < kLongestValue; ++end) {
        const char c = text[end];
        if (separator == '=' ? is_divider(c) && (c != ' ' || end > at)
                             : c == '\t' || c == '|' ||
                                   ((c == ' ' || c == ',') && at_or_end(text, end + 1) == ' '))
            break;
    }
    while (end > at && is_space(text[end - 1])) --end;
    while (end > at && std::string_view(",;").find(text[end - 1]) != std::string_view::npos) --end;
    return {at, end - at};
}

}  // namespace

Form form_of_address(std::string_view text, Form otherwise) {
    if (canonical(Form::ipv4, text)) return Form::ipv4;
    if (is_mac(text)) return Form::hex;
    if (text.find(':') != std::string_view::npos && canonical(Form::ipv6, text)) return Form::ipv6;
    return otherwise;
}

namespace {

void find_value(Kind kind, std::string_view text, Span span, const TakeFound& take) {
    while (span.size > 0 && is_space(text[span.at])) span = {span.at + 1, span.size - 1};
    while (span.size > 0 && is_space(text[span.at + span.size - 1])) --span.size;
    const auto value = text.substr(span.at, span.size);
    const auto word = first_word(text, span);
    switch (kind) {
        case Kind::serial:
            if (is_serial(value))
                give(span, Class::serials, Form::text, take);
            else if (is_mixed(text.substr(word.at, word.size)))
                give(word, Class::serials, Form::text, take);
            break;
        case Kind::tag:
            if (says_nothing(Form::text, value) || value.find('=') != std::string_view::npos) break;
            give(span, Class::serials, Form::text, take);
            break;
        case Kind::number: give_number(text, span, take); break;
        case Kind::address: give_address(text, span, std::nullopt, take); break;
        case Kind::host: give_address(text, span, false, take); break;
        case Kind::domain: give_address(text, span, true, take); break;
        case Kind::user:
            if (is_user_name(text.substr(word.at, word.size)))
                give(word, Class::users, Form::text, take);
            break;
        case Kind::secret: {
            constexpr std::string_view kSchemes[] = {"Bearer", "Basic", "Digest", "Token"};
            if (std::find(std::begin(kSchemes), std::end(kSchemes),
                          text.substr(word.at, word.size)) != std::end(kSchemes))
                break;                                                      // see phrases.cpp
            if (value.starts_with('/')) break;                              // "PWD=/root"
            if (is_number(value) && value.size() < kShortestNumber) break;  // "Token: 5"
            const bool is_quoted = span.at > 0 && std::string_view("\"'").find(text[span.at - 1]) !=
                                                      std::string_view::npos;
            const bool is_one_word = is_quoted || value.find(' ') == std::string_view::npos;
            if (is_one_word)
                give(span, Class::secrets, Form::text, take);
            else if (!has_words(value) || digits_in(text.substr(word.at, word.size)) > 0)
                give(word, Class::secrets, Form::text, take);
            break;
        }
    }
}

}  // namespace

void find_value_of(std::string_view label, std::string_view text, Span span,
                   const TakeFound& take) {
    if (const auto kind = kind_of_label(label)) find_value(*kind, text, span, take);
}

void find_labelled(std::string_view text, std::size_t at, const TakeFound& take) {
    const char separator = text[at];
    if (separator == '-' && (at == 0 || text[at - 1] != ' ' || at_or_end(text, at + 1) != ' '))
        return;
    // "host::", "c0:1"
    if (separator == ':' && at_or_end(text, at + 1) == ':') return;
    std::size_t end = at;
    while (end > 0 && std::string_view(" \t\"')").find(text[end - 1]) != std::string_view::npos)
        --end;
    if (!may_end_label(text, end)) return;
    std::size_t begin = end;
    while (begin > 0 && end - begin < kLongestLabel) {
        const char c = text[begin - 1];
        if (!is_alnum(c) && std::string_view(" _-/.").find(c) == std::string_view::npos) break;
        --begin;
    }
    const auto kind = kind_of_label(text.substr(begin, end - begin));
    if (!kind) return;
    const auto value = value_at(text, at + 1, separator);
    if (value.size > 0) find_value(*kind, text, value, take);
}

}  // namespace qvhost::redact
