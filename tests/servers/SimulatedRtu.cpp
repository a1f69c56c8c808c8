#include "servers/SimulatedRtu.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace quillport::test {

namespace {

using nlohmann::json;

/// Generous, for a machine that runs many tests at once.
constexpr std::chrono::seconds patience{30};

std::vector<std::string> commandLine(const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"/usr/bin/python3", QUILLPORT_SIMULATOR};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
}

std::string redirection(const std::string& host, int from, int to) {
    return host + ':' + std::to_string(from) + ":127.0.0.1:" + std::to_string(to);
}

} // namespace

SimulatedRtu::SimulatedRtu(const std::vector<std::string>& options) : process_(commandLine(options)) {
    const json ready = json::parse(process_.readLine(patience));
    ftpPort_ = ready.at("ftp");
    httpPort_ = ready.at("http");
    folder_ = ready.at("folder").get<std::string>();
}

std::vector<std::string> SimulatedRtu::connectTo(const std::string& host) const {
    return {redirection(host, 21, ftpPort_), redirection(host, 80, httpPort_)};
}

std::string SimulatedRtu::ask(const std::string& order) {
    process_.writeLine(order);
    std::string answer = process_.readLine(patience);
    if (json::parse(answer).at("event") == "error") {
        throw std::runtime_error("the simulated RTU refused " + order + ": " + answer);
    }
    return answer;
}

void SimulatedRtu::addFault(const std::string& faultText) {
    ask(json{{"fault", faultText}}.dump());
}

void SimulatedRtu::clearFaults() {
    ask(json{{"clear", "faults"}}.dump());
}

std::vector<LoggedCommand> SimulatedRtu::commands() {
    const json answer = json::parse(ask(json{{"commands", true}}.dump()));
    std::vector<LoggedCommand> commands;
    for (const json& entry : answer.at("commands")) {
        const json& reply = entry.at("reply");
        commands.push_back({entry.at("session"), entry.at("command"), entry.at("argument"),
                            reply.is_null() ? 0 : reply.get<int>()});
    }
    return commands;
}

} // namespace quillport::test
