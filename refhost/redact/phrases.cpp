#include "redact/phrases.h"

#include <algorithm>
#include <array>
#include <string>

#include "redact/labels.h"
#include "redact/letters.h"
#include "redact/search.h"
#include "text/case.h"

namespace qvhost::redact {

namespace {

enum class Follows {
    user,             // a name
    user_colon,       // a name before ':' ("NAME : TTY=")
    user_before,      // it is the name that stands before it
    numbered_user,    // a number and a name
    numbered_secret,  // a number and a word
    login,            // a name, and perhaps ':' or '%' and a password
    host,             // a name or an address
    domain,           // a name with dots, or an address
    domains,          // several of them
    secret,           // a word
    serial,           // a word with a digit
    token,            // this and what follows is one word, and secret
    key_block,        // lines up to "-----END"
    public_key,       // a long word, and perhaps user@host
};

struct Phrase {
    std::string_view words;  // in lower case
    Follows follows;
    // Something that stands before it on the line; empty: nothing has to.
    std::string_view after = {};
    std::size_t least = 0;  // characters of the value
    bool capital = false;   // it is in capital letters, or its option is
};

// clang-format off
constexpr auto kPhrases = std::to_array<Phrase>({
    // logs
    {"for user ", Follows::user}, {"of user ", Follows::user}, {"invalid user ", Follows::user}, {"illegal user ", Follows::user},
    {"by user ", Follows::user}, {"as user ", Follows::user}, {"accepted password for ", Follows::user},
    {"failed password for ", Follows::user}, {"accepted publickey for ", Follows::user}, {"keyboard-interactive/pam for ", Follows::user},
    {"authenticating user ", Follows::user}, {"disconnected from user ", Follows::user}, {"(to root) ", Follows::user},
    {"new user: name=", Follows::user}, {"logged in as ", Follows::user}, {"login by ", Follows::user}, {"logged in: ", Follows::user},
    {"removed session of user ", Follows::user}, {"user account ", Follows::user, "", 3}, {"username ", Follows::user, "", 2},
    {"/home/", Follows::user}, {"/users/", Follows::user, "", 2, false}, {"/var/spool/cron/crontabs/", Follows::user}, {"/var/mail/", Follows::user},
    {"sudo: ", Follows::user_colon}, {"]: ", Follows::user_colon, "sudo["}, {"]: (", Follows::user, "cron"}, {"]: user ", Follows::user, "gpasswd["},
    {"password changed for ", Follows::user}, {"change user ", Follows::user, "usermod"}, {"failed login for ", Follows::user},
    {"login failed for ", Follows::user}, {"authentication failure for ", Follows::user}, {" logged in", Follows::user_before, "user "},
    {" logged out", Follows::user_before, "user "},

    {" by ", Follows::user, "session opened"}, {" by ", Follows::user, "session closed"},
    {"uid=", Follows::user}, {" from ", Follows::domain}, {"connect to host ", Follows::host, "ssh"}, {"resolve host ", Follows::host},
    {"resolve host: ", Follows::host}, {"resolve hostname ", Follows::host}, {"set hostname to ", Follows::host}, {"hostname to ", Follows::host},
    {"hostname is ", Follows::host}, {"hostname set to ", Follows::host}, {"hostname: ", Follows::host}, {"hostname ", Follows::domain},
    {"nameserver ", Follows::domain}, {"search ", Follows::domains}, {"domain ", Follows::domain}, {"server ", Follows::domain},
    {"connected to ", Follows::domain}, {"connecting to ", Follows::domain}, {"connection to ", Follows::domain},
    // command lines
    {" -u ", Follows::user, "ipmi", 1, true}, {" -h ", Follows::host, "ipmi", 1, true}, {" -p ", Follows::secret, "ipmi", 1, true},
    {" -n ", Follows::host, "ipmiutil"}, {" -k ", Follows::secret, "ipmi"}, {" -y ", Follows::secret, "ipmi"},
    {" -u ", Follows::user, "ipmi-"}, {" -h ", Follows::domain, "ipmi-"}, {" -p ", Follows::secret, "ipmi-"},
    {" -u ", Follows::user, "racadm"}, {" -p ", Follows::secret, "racadm"}, {"user set name ", Follows::numbered_user},
    {"user set password ", Follows::numbered_secret}, {" snmp ", Follows::secret, "lan set"}, {" password ", Follows::secret, "lan set"},
    {" -c ", Follows::secret, "snmpwalk"}, {" -c ", Follows::secret, "snmpget"}, {" -c ", Follows::secret, "snmpset"},
    {" -c ", Follows::secret, "snmpbulk"}, {" -u ", Follows::user, " -v3"}, {" -u ", Follows::user, " -v 3"},
    {" -a ", Follows::secret, " -v3", 1, true}, {" -a ", Follows::secret, " -v 3", 1, true}, {" -x ", Follows::secret, " -v3", 1, true},
    {" -x ", Follows::secret, " -v 3", 1, true}, {" cn=", Follows::user, "ldap"}, {" cn=", Follows::user, "bind"},
    {"\"cn=", Follows::user, "ldap"}, {"\"cn=", Follows::user, "bind"}, {" -w ", Follows::secret, "ldap"},
    {" -u ", Follows::login, "curl"}, {"--user ", Follows::login, "curl"}, {" -u ", Follows::login, "smbclient"},
    {" -u ", Follows::user, "docker login"}, {" -p ", Follows::secret, "docker login"}, {" -a ", Follows::secret, "redis-cli"},
    {" -l ", Follows::user, "ssh"},
    {"--user ", Follows::user}, {"--username ", Follows::user}, {"--login ", Follows::user}, {"--password ", Follows::secret},
    {"--passwd ", Follows::secret}, {"--pass ", Follows::secret}, {"--passphrase ", Follows::secret}, {"--token ", Follows::secret},
    {"--secret ", Follows::secret}, {"--host ", Follows::host}, {"--hostname ", Follows::host}, {"--api-key ", Follows::secret},
    {"sshpass -p", Follows::secret}, {"-passin pass:", Follows::secret}, {"-passout pass:", Follows::secret}, {"-password ", Follows::secret, "", 2},
    {"identified by ", Follows::secret}, {"community ", Follows::secret, "snmp"}, {"rocommunity ", Follows::secret},
    {"rwcommunity ", Follows::secret}, {"bindpw ", Follows::secret}, {"rootpw ", Follows::secret}, {"trapcommunity ", Follows::secret},
    {" default ", Follows::secret, "com2sec"}, {"createuser ", Follows::user}, {" md5 ", Follows::secret, "createuser"},
    {" sha ", Follows::secret, "createuser"}, {" des ", Follows::secret, "createuser"}, {" aes ", Follows::secret, "createuser"},
    {"<password>", Follows::secret}, {"<passwd>", Follows::secret}, {"<secret>", Follows::secret}, {"<token>", Follows::secret},
    {"<user>", Follows::user}, {"<username>", Follows::user},
    {"password is ", Follows::secret}, {"password to ", Follows::secret, "set"}, {"securitykey=", Follows::secret},
    // numbers of devices
    {"serial number ", Follows::serial, "", 5}, {"serial no ", Follows::serial, "", 5}, {"serial no. ", Follows::serial, "", 5},
    {"serial ", Follows::serial, "", 5}, {"s/n ", Follows::serial, "", 4}, {" sn ", Follows::serial, "", 6}, {"service tag ", Follows::serial, "", 5},
    {"asset tag ", Follows::serial, "", 4},
    // keys that say what they are
    {"bearer ", Follows::secret, "", 8}, {"basic ", Follows::secret, "uthorization", 4}, {"token ", Follows::secret, "uthorization", 4},
    {"akia", Follows::token, "", 20, true}, {"asia", Follows::token, "", 20, true}, {"ghp_", Follows::token, "", 20}, {"gho_", Follows::token, "", 20},
    {"ghs_", Follows::token, "", 20}, {"github_pat_", Follows::token, "", 20}, {"glpat-", Follows::token, "", 16}, {"xoxb-", Follows::token, "", 16},
    {"xoxp-", Follows::token, "", 16}, {"sk_live_", Follows::token, "", 16}, {"sk-proj-", Follows::token, "", 24}, {"sk-ant-", Follows::token, "", 24},
    {"eyjh", Follows::token, "", 24}, {"eyj0", Follows::token, "", 24}, {"eyjr", Follows::token, "", 24}, {"eyjl", Follows::token, "", 24},
    {"eyjj", Follows::token, "", 24}, {"eyjp", Follows::token, "", 24},
    {"ghu_", Follows::token, "", 20}, {"ghr_", Follows::token, "", 20}, {"xoxa-", Follows::token, "", 16}, {"xoxr-", Follows::token, "", 16},
    {"xoxs-", Follows::token, "", 16}, {"sk_test_", Follows::token, "", 16}, {"rk_live_", Follows::token, "", 16}, {"whsec_", Follows::token, "", 20},
    {"ya29.", Follows::token, "", 20}, {"pypi-", Follows::token, "", 30}, {"dop_v1_", Follows::token, "", 20}, {"hvb.", Follows::token, "", 20},
    {"{sha}", Follows::token, "", 20}, {"{sha256}", Follows::token, "", 20}, {"{sha512}", Follows::token, "", 20}, {"{ssha256}", Follows::token, "", 20},
    {"{ssha512}", Follows::token, "", 20}, {"{md5}", Follows::token, "", 20}, {"{smd5}", Follows::token, "", 20}, {"{crypt}", Follows::token, "", 20},
    {"hvs.", Follows::token, "", 20}, {"aiza", Follows::token, "", 30}, {"{ssha}", Follows::token, "", 20}, {"npm_", Follows::token, "", 30},
    {"private key-----", Follows::key_block}, {"private key block-----", Follows::key_block},
    {"ssh-rsa ", Follows::public_key}, {"ssh-ed25519 ", Follows::public_key}, {"ssh-dss ", Follows::public_key},
    {"ecdsa-sha2-nistp256 ", Follows::public_key}, {"ecdsa-sha2-nistp384 ", Follows::public_key}, {"ecdsa-sha2-nistp521 ", Follows::public_key},
});

// What stands where a name could, in sentences.
constexpr auto kNoNames = std::to_array<std::string_view>({
    "the", "a", "an", "this", "that", "unknown", "user", "mode", "space", "is", "was", "has", "name", "by", "from", "on", "to",
    "in", "of", "for", "and", "or", "not", "no", "invalid", "illegal", "with", "all", "any", "each", "it", "must", "set", "port",
    "authentication", "required", "file", "failed", "which", "does", "string", "name", "names", "session",
});
// clang-format on

const Search& search() {
    static const auto all = [] {
        constexpr std::size_t kShortestPhrase = 4;
        Search made(kShortestPhrase);
        for (std::uint32_t i = 0; i < kPhrases.size(); ++i) made.add(kPhrases[i].words, i);
        return made;
    }();
    return all;
}

bool is_name_part(char c) {
    return is_alnum(c) || is_wide(c) ||
           std::string_view("._-$\\+").find(c) != std::string_view::npos;
}
bool is_host_part(char c) {
    return is_alnum(c) || is_wide(c) || std::string_view("._-:%").find(c) != std::string_view::npos;
}
bool is_secret_part(char c) {
    return static_cast<unsigned char>(c) > ' ' &&
           std::string_view("\"',;<>)").find(c) == std::string_view::npos;
}
bool is_token_part(char c) {
    return is_alnum(c) || std::string_view("._-+/=").find(c) != std::string_view::npos;
}

class PhraseReader {
public:
    PhraseReader(std::string_view text, const TakeFound& take) : text_(text), take_(take) {}

    void read(std::size_t at, std::size_t size, const Phrase& phrase) const {
        if (phrase.capital && !is_capital(at, size, phrase)) return;
        if (!phrase.after.empty() && !stands_behind(at, phrase.after)) return;
        // Not "nouser alice", "misserial X".
        if (is_alnum(phrase.words[0]) && phrase.follows != Follows::key_block && at > 0 &&
            is_alnum(text_[at - 1]))
            return;
        auto value = at + size;
        // In the words of a tool's help "<password>" is no element.
        if (phrase.words.ends_with('>') && at_or_end(text_, value) == ' ') return;
        while (value < text_.size() && text_[value] == ' ') ++value;
        switch (phrase.follows) {
            case Follows::user: return read_user(value, phrase.words);
            case Follows::user_colon: return read_user_before_colon(value);
            case Follows::user_before: return read_user_before(at);
            case Follows::numbered_user: return read_user(behind_number(value), phrase.words);
            case Follows::numbered_secret: return read_secret(behind_number(value), phrase.least);
            case Follows::login: return read_login(value);
            case Follows::host: read_host(value, false); return;
            case Follows::domain: read_host(value, true); return;
            case Follows::domains: return read_domains(value);
            case Follows::secret: return read_secret(value, phrase.least);
            case Follows::serial: return read_serial(value, phrase.least);
            case Follows::token: return read_token(at, size, phrase.least);
            case Follows::key_block: return read_key_block(value);
            case Follows::public_key: return read_public_key(value);
        }
    }

private:
    std::size_t line_before(std::size_t at) const {
        const auto end = text_.rfind('\n', at > 0 ? at - 1 : 0);
        return end == std::string_view::npos || at == 0 ? 0 : end + 1;
    }
    bool stands_behind(std::size_t at, std::string_view words) const {
        constexpr std::size_t kFar = 512;
        const auto begin = std::max(line_before(at), at > kFar ? at - kFar : 0);
        return lowered(text_.substr(begin, at - begin)).find(words) != std::string::npos;
    }
    // The capital letters of options: "-U" of ipmitool; keys begin with "AKIA".
    bool is_capital(std::size_t at, std::size_t size, const Phrase& phrase) const {
        const auto found = text_.substr(at, size);
        return phrase.follows == Follows::token ? std::all_of(found.begin(), found.end(), is_upper)
                                                : is_upper(found[2]);
    }

    std::string_view run(std::size_t at, bool (*is_part)(char)) const {
        auto end = at;
        while (end < text_.size() && is_part(text_[end])) ++end;
        return text_.substr(at, end - at);
    }
    std::size_t place(std::string_view part) const {
        return static_cast<std::size_t>(part.data() - text_.data());
    }
    void give(std::string_view part, Class which, Form form) const {
        take_({place(part), part.size(), which, form, false});
    }

    void read_user(std::size_t at, std::string_view words) const {
        if (words == "uid=" && is_digit(at_or_end(text_, at))) {  // "uid=1000(alice)"
            at += run(at, is_digit).size();
            if (at_or_end(text_, at) != '(') return;
            ++at;
        }
        const char quote = at_or_end(text_, at);
        if (quote == '\'' || quote == '"' || quote == '<') ++at;
        auto name = run(at, is_name_part);
        while (!name.empty() && std::string_view(".-").find(name.back()) != std::string_view::npos)
            name.remove_suffix(1);
        if (name.empty() || std::all_of(name.begin(), name.end(), is_digit)) return;
        if (std::find(kNoNames.begin(), kNoNames.end(), lowered(name)) != kNoNames.end()) return;
        give(name, Class::users, Form::text);
    }
    // "User alice logged in"
    void read_user_before(std::size_t at) const {
        auto begin = at;
        while (begin > 0 && is_name_part(text_[begin - 1])) --begin;
        constexpr std::string_view kWord = "user ";
        if (begin >= kWord.size() &&
            lowered(text_.substr(begin - kWord.size(), kWord.size())) == kWord)
            read_user(begin, "");
    }
    std::size_t behind_number(std::size_t at) const {
        if (!is_digit(at_or_end(text_, at))) return text_.size();
        at += run(at, is_digit).size();
        return at + run(at, [](char c) { return c == ' '; }).size();
    }
    // "alice:password", "alice%password"
    void read_login(std::size_t at) const {
        read_user(at, "");
        if (std::string_view("\"'").find(at_or_end(text_, at)) != std::string_view::npos) ++at;
        const auto divider = at + run(at, is_name_part).size();
        if (std::string_view(":%").find(at_or_end(text_, divider)) != std::string_view::npos)
            read_secret(divider + 1, 1);
    }
    // "sudo:   alice : TTY=pts/0"
    void read_user_before_colon(std::size_t at) const {
        const auto name = run(at, is_name_part);
        const auto behind = at + name.size();
        if (!name.empty() && text_.substr(behind, 3) == " : ") give(name, Class::users, Form::text);
    }
    std::size_t read_host(std::size_t at, bool needs_dot) const {
        while (at < text_.size() &&
               std::string_view("<'\"[").find(text_[at]) != std::string_view::npos)
            ++at;
        auto host = run(at, is_host_part);
        const auto size = host.size();
        while (!host.empty() && std::string_view(".:-").find(host.back()) != std::string_view::npos)
            host.remove_suffix(1);
        if (form_of_address(host, Form::text) != Form::text) {
            give(host, Class::network, form_of_address(host, Form::text));
            return size;
        }
        host = host.substr(0, host.find(':'));
        if (!host.empty())
            find_value_of(needs_dot ? "server" : "hostname", text_, {place(host), host.size()},
                          [&](const Found& found) {
                              auto given = found;
                              given.in_own_field = false;
                              take_(given);
                          });
        return size;
    }
    void read_domains(std::size_t at) const {
        for (std::size_t size = 1; size > 0;) {
            size = read_host(at, true);
            at += size;
            while (at < text_.size() && text_[at] == ' ') ++at;
        }
    }
    void read_secret(std::size_t at, std::size_t least) const {
        const char quote = at_or_end(text_, at);
        auto value = run(at, is_secret_part);
        if (quote == '\'' || quote == '"') {
            const auto end = text_.find_first_of(std::string{quote, '\n'}, at + 1);
            if (end == std::string_view::npos) return;
            value = text_.substr(at + 1, end - at - 1);
        }
        if (value.size() < std::max<std::size_t>(least, 1)) return;
        if (std::find(kNoNames.begin(), kNoNames.end(), lowered(value)) != kNoNames.end()) return;
        take_({place(value), value.size(), Class::secrets, Form::text, true});
    }
    void read_serial(std::size_t at, std::size_t least) const {
        const auto value = run(
            at, [](char c) { return is_alnum(c) || c == '-' || c == '_' || c == '.' || c == '/'; });
        auto part = value;
        while (!part.empty() && !is_alnum(part.back())) part.remove_suffix(1);
        if (part.size() < least || std::none_of(part.begin(), part.end(), is_digit)) return;
        if (part.find('/') != std::string_view::npos) return;  // "serial 8250/16550"
        find_value_of("serial", text_, {place(part), part.size()}, [&](const Found& found) {
            auto given = found;
            given.in_own_field = false;
            take_(given);
        });
    }
    void read_token(std::size_t at, std::size_t size, std::size_t least) const {
        auto token = text_.substr(at, size + run(at + size, is_token_part).size());
        if (token.size() < least || (at > 0 && is_alnum(text_[at - 1]))) return;
        if (token[0] == '{') token.remove_prefix(size);  // "{SSHA}" is nobody's
        give(token, Class::secrets, Form::text);
    }
    void read_key_block(std::size_t at) const {
        const auto end = std::min(text_.find("-----END", at), text_.size());
        while (at < end) {
            // In a text of JSON a line ends with "\n".
            const auto escaped = text_.find("\\n", at);
            const auto stop = std::min({text_.find('\n', at), escaped, end});
            const auto line = trimmed(text_.substr(at, stop - at));
            // "Proc-Type: 4,ENCRYPTED"
            if (!line.empty() && line.find(": ") == std::string_view::npos &&
                std::all_of(line.begin(), line.end(), is_token_part))
                take_({place(line), line.size(), Class::secrets, Form::text, true});
            at = stop + (stop == escaped ? 2 : 1);
        }
    }
    void read_public_key(std::size_t at) const {
        constexpr std::size_t kShortestKey = 40;
        const auto key = run(at, is_token_part);
        if (key.size() < kShortestKey) return;
        give(key, Class::secrets, Form::text);
        at += key.size();
        while (at < text_.size() && text_[at] == ' ') ++at;
        const auto name = run(at, is_name_part);
        if (name.empty() || at_or_end(text_, at + name.size()) != '@') return;
        give(name, Class::users, Form::text);
        read_host(at + name.size() + 1, false);
    }

    std::string_view text_;
    const TakeFound& take_;
};

constexpr auto kMonths =
    std::to_array<std::string_view>({"Jan ", "Feb ", "Mar ", "Apr ", "May ", "Jun ", "Jul ", "Aug ",
                                     "Sep ", "Oct ", "Nov ", "Dec "});

// "Nov 22 14:00:01 web1 kernel: ...", "2026-11-22T14:00:01+0000 web1 kernel: ...": the host. "Linux web1 5.10.0 ...".
void find_in_line(std::string_view text, std::size_t at, std::size_t end, const TakeFound& take) {
    const auto line = text.substr(at, end - at);
    std::size_t host = 0;
    constexpr std::size_t kTime = 16, kIsoTime = 19;
    if (line.size() > kTime && line[3] == ' ' && line[9] == ':' && line[12] == ':' &&
        line[15] == ' ' &&
        std::find(kMonths.begin(), kMonths.end(), line.substr(0, 4)) != kMonths.end()) {
        host = kTime;
    } else if (line.size() > kIsoTime && line[4] == '-' && line[10] == 'T' && line[13] == ':' &&
               line[16] == ':') {
        host = line.find(' ') + 1;
    } else if (line.starts_with("Linux ")) {
        host = 6;
        const auto space = line.find(' ', host);
        if (space == std::string_view::npos || !is_digit(at_or_end(line, space + 1))) return;
    }
    if (host == 0) return;
    auto stop = std::min(line.find(' ', host), line.size());
    if (stop == line.size()) return;
    // In a log the program follows: "kernel:", "sshd[12]:".
    if (host != 6) {
        const auto program = line.substr(stop + 1, line.find(' ', stop + 1) - stop - 1);
        if (!program.ends_with(':') || !is_letter(program[0])) return;
    }
    const auto name = line.substr(host, stop - host);
    if (name.empty() || name.find_first_of(":[]()=/'\"") != std::string_view::npos ||
        !is_alnum(name[0]) || std::all_of(name.begin(), name.end(), is_digit))
        return;
    take({at + host, name.size(), Class::network, Form::host, false});
}

// "alice:x:1000:1000:Alice Liddell,,,:/home/alice:/bin/bash" and "alice:$6$...:19000:0:99999:7:::"
void find_account(std::string_view text, std::size_t at, std::size_t end, const TakeFound& take) {
    const auto line = text.substr(at, end - at);
    const auto name = line.find(':');
    if (name == 0 || name > 32 || name + 2 >= line.size()) return;
    const char mark = line[name + 1];
    const bool is_passwd = std::string_view("x*!").find(mark) != std::string_view::npos &&
                           line[name + 2] == ':' && is_digit(at_or_end(line, name + 3));
    constexpr std::size_t kHash = 20, kOldHash = 13;
    const auto password = line.substr(name + 1, line.find(':', name + 1) - name - 1);
    const bool is_hash =
        mark == '$' && password.size() >= kHash && line.find(' ') == std::string_view::npos;
    // As crypt(3) made them once.
    const bool is_old_hash = password.size() == kOldHash &&
                             is_digit(at_or_end(line, name + kOldHash + 2)) &&
                             std::count(line.begin(), line.end(), ':') == 8 &&
                             std::all_of(password.begin(), password.end(), is_token_part);
    if (!is_passwd && !is_hash && !is_old_hash) return;
    if (!std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(name), is_name_part))
        return;
    take({at, name, Class::users, Form::text, false});
    if (is_old_hash) take({at + name + 1, kOldHash, Class::secrets, Form::text, true});
    if (!is_passwd) return;
    auto from = line.find(':', name + 3);
    if (from != std::string_view::npos) from = line.find(':', from + 1);
    if (from == std::string_view::npos) return;
    const auto to = line.find_first_of(":,", from + 1);
    const auto uid = line.substr(name + 3, 4);
    const bool is_person = uid.size() == 4 && std::all_of(uid.begin(), uid.end(), is_digit);
    if (is_person && to != std::string_view::npos && to > from + 1)
        take({at + from + 1, to - from - 1, Class::users, Form::text, false});
}

// "2   alice            true    false      true       ADMINISTRATOR", from ipmitool's "user list"
void find_bmc_user(std::string_view text, std::size_t at, std::size_t end, const TakeFound& take) {
    constexpr std::size_t kName = 4;
    const auto line = text.substr(at, end - at);
    if (line.size() <= kName || !is_digit(line[0]) || line[kName - 1] != ' ' ||
        !is_name_part(line[kName]))
        return;
    const auto stop = line.find(' ', kName);
    if (stop == std::string_view::npos) return;
    const auto rest = trimmed(line.substr(stop));
    if (!rest.starts_with("true ") && !rest.starts_with("false ")) return;
    take({at + kName, stop - kName, Class::users, Form::text, true});
}

}  // namespace

void find_phrases(std::string_view text, const TakeFound& take) {
    const PhraseReader reader(text, take);
    const auto small = lowered(text);
    search().each(small, [&](std::size_t at, std::size_t size, std::uint32_t id) {
        reader.read(at, size, kPhrases[id]);
        return false;
    });
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find('\n', at), text.size());
        find_in_line(text, at, end, take);
        find_account(text, at, end, take);
        find_bmc_user(text, at, end, take);
        at = end + 1;
    }
}

}  // namespace qvhost::redact
