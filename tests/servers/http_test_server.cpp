#include "servers/http_test_server.h"

#include <nlohmann/json.hpp>

namespace quillport::test {

namespace {

using nlohmann::json;

/// Generous, for a machine that runs many tests at once.
constexpr std::chrono::seconds patience{30};

} // namespace

HttpTestServer::HttpTestServer(const std::filesystem::path& folder)
    : process_({"/usr/bin/python3", QUILLPORT_HTTP_TEST_SERVER, folder.string()}),
      port_(json::parse(process_.readLine(patience)).at("port")) {}

std::vector<HttpRequest> HttpTestServer::requests() {
    process_.writeLine("requests");
    std::vector<HttpRequest> requests;
    for (const json& entry : json::parse(process_.readLine(patience))) {
        requests.push_back({entry.at("line"), entry.at("headers")});
    }
    return requests;
}

} // namespace quillport::test
