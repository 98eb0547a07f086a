#include "Tests/LoopbackServer.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>
#include <sstream>

namespace quillmere {
namespace {

/// A proxy that the environment names must not stand between a test and its server.
const bool withoutProxy = setenv("no_proxy", "127.0.0.1", 1) == 0;

/// A bound socket of the loopback and its port.
std::pair<int, std::uint16_t> boundSocket() {
    const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(number, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        getsockname(number, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ADD_FAILURE() << "no port on the loopback";
    }
    return {number, ntohs(address.sin_port)};
}

std::string urlOf(std::uint16_t port, const std::string& path) {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

/// Reads on until `text` has `length` bytes; false at the connection's end.
bool readUpTo(int connection, std::string& text, std::size_t length) {
    while (text.size() < length) {
        char bytes[65536];
        const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
        if (count <= 0) return false;
        text.append(bytes, static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<LoopbackServer::Request> readRequest(int connection) {
    std::string text;
    std::size_t end = 0;
    while ((end = text.find("\r\n\r\n")) == std::string::npos) {
        if (!readUpTo(connection, text, text.size() + 1)) return std::nullopt;
        if (!std::isupper(static_cast<unsigned char>(text[0]))) return std::nullopt;  // no HTTP
    }
    LoopbackServer::Request request;
    std::istringstream head(text.substr(0, end + 2));
    std::string line;
    head >> request.method >> request.target;
    std::getline(head, line);
    while (std::getline(head, line)) {
        const std::size_t colon = line.find(':');
        std::string name = line.substr(0, colon);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const std::size_t value = line.find_first_not_of(' ', colon + 1);
        request.fields[name] = line.substr(value, line.find('\r') - value);
    }
    const auto length = request.fields.find("content-length");
    const std::size_t size = length == request.fields.end() ? 0 : std::stoul(length->second);
    if (!readUpTo(connection, text, end + 4 + size)) return std::nullopt;
    request.body = text.substr(end + 4, size);
    return request;
}

/// As much as the client takes.
void sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace

LoopbackServer::LoopbackServer() {
    EXPECT_TRUE(withoutProxy);
    std::tie(listener_, port_) = boundSocket();
    if (listen(listener_, 128) != 0) ADD_FAILURE() << "no listening";
    thread_ = std::thread([this] { serve(); });
}

LoopbackServer::~LoopbackServer() {
    shutdown(listener_, SHUT_RDWR);  // ends the accept
    thread_.join();
    close(listener_);
    for (const int connection : held_) close(connection);
}

std::string LoopbackServer::url(const std::string& path) const { return urlOf(port_, path); }

void LoopbackServer::answer(const std::string& path, int status,
                            const std::map<std::string, std::string>& fields,
                            const std::string& body) {
    std::string bytes = "HTTP/1.1 " + std::to_string(status) + " Status\r\nConnection: close\r\n";
    if (status != 304) bytes += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    for (const auto& [name, value] : fields) bytes += name + ": " + value + "\r\n";
    answerRaw(path, bytes + "\r\n" + body);
}

void LoopbackServer::answerRaw(const std::string& path, const std::string& bytes) {
    set(path, {bytes, false});
}

void LoopbackServer::neverAnswer(const std::string& path) { set(path, {"", true}); }

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

void LoopbackServer::set(const std::string& path, Reply reply) {
    const std::lock_guard lock(mutex_);
    replies_[path] = std::move(reply);
}

void LoopbackServer::serve() {
    for (;;) {
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) return;
        serveConnection(connection);
    }
}

void LoopbackServer::serveConnection(int connection) {
    const std::optional<Request> request = readRequest(connection);
    Reply reply{"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"};
    if (request) {
        const std::lock_guard lock(mutex_);
        requests_.push_back(*request);
        const auto found = replies_.find(request->target.substr(0, request->target.find('?')));
        if (found != replies_.end()) reply = found->second;
    }
    if (reply.never) {
        held_.push_back(connection);
        return;
    }
    if (request) sendAll(connection, reply.bytes);
    close(connection);
}

std::string refusingURL() {
    const auto [number, port] = boundSocket();
    close(number);
    return urlOf(port, "/");
}

}  // namespace quillmere
