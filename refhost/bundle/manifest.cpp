#include "bundle/manifest.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "bundle/digest.h"

namespace qvhost::bundle {

using nlohmann::ordered_json;

namespace {

constexpr int kIndent = 1;
constexpr int kMostDepth = 4;

ordered_json known(const std::string& text) {
    return text.empty() ? ordered_json() : ordered_json(text);
}

std::string text_of(const ordered_json& json, const char* key) {
    const auto& value = json.at(key);
    return value.is_null() ? "" : value.get<std::string>();
}

ordered_json json_of(const BundledFile& file) {
    ordered_json json{
        {"name",   file.name  },
        {"bytes",  file.bytes },
        {"sha256", file.sha256},
    };
    if (file.command.empty()) return json;
    json["command"] = file.command;
    json["started"] = known(file.started);
    json["seconds"] = file.seconds ? ordered_json(*file.seconds) : ordered_json();
    json["outcome"] = known(file.outcome);
    return json;
}

BundledFile file_of(const ordered_json& json) {
    BundledFile file{json.at("name"), json.at("bytes"), json.at("sha256")};
    if (!json.contains("command")) return file;
    file.command = json.at("command");
    file.started = text_of(json, "started");
    if (!json.at("seconds").is_null()) file.seconds = json.at("seconds").get<double>();
    file.outcome = text_of(json, "outcome");
    return file;
}

}  // namespace

std::string json_of(const Manifest& manifest) {
    auto files = ordered_json::array();
    for (const auto& file : manifest.files) files.push_back(json_of(file));
    auto left_out = ordered_json::array();
    for (const auto& [name, reason, bytes] : manifest.left_out)
        left_out.push_back({
            {"name",   name  },
            {"bytes",  bytes },
            {"reason", reason}
        });
    const ordered_json json{
        {"format",       kFormat                     },
        {"program",      manifest.program            },
        {"collected_by", known(manifest.collected_by)},
        {"host",         known(manifest.host)        },
        {"started",      known(manifest.started)     },
        {"finished",     known(manifest.finished)    },
        {"status",       known(manifest.status)      },
        {"redacted",     known(manifest.redacted)    },
        {"files",        std::move(files)            },
        {"left_out",     std::move(left_out)         },
    };
    return json.dump(kIndent, ' ', false, ordered_json::error_handler_t::replace) + '\n';
}

std::string digest_line(std::string_view manifest) {
    Sha256 digest;
    digest.add(manifest);
    return digest.hex() + "  " + kManifestName + "\n";
}

Manifest read_manifest(std::string_view text) {
    try {
        // Nothing in it is nested deeper than a file of the list.
        const auto json = ordered_json::parse(
            text, [](int depth, ordered_json::parse_event_t, const ordered_json&) {
                if (depth > kMostDepth)
                    throw std::runtime_error("its manifest.json is none of a bundle");
                return true;
            });
        if (json.at("format").get<int>() != kFormat)
            throw std::runtime_error(
                "its manifest.json is of a format that this program does not read");
        Manifest manifest{json.at("program"),
                          text_of(json, "collected_by"),
                          text_of(json, "host"),
                          text_of(json, "started"),
                          text_of(json, "finished"),
                          text_of(json, "status"),
                          json.contains("redacted") ? text_of(json, "redacted") : "",
                          {},
                          {}};
        for (const auto& file : json.at("files")) manifest.files.push_back(file_of(file));
        for (const auto& one : json.at("left_out"))
            manifest.left_out.push_back({one.at("name"), one.at("reason"), one.at("bytes")});
        return manifest;
    } catch (const nlohmann::json::exception&) {
        throw std::runtime_error("its manifest.json is none of a bundle");
    }
}

}  // namespace qvhost::bundle
