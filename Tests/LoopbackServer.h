// A real HTTP server on the loopback, told by a test what to answer.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillmere {

/// Answers one request a connection, one after the other, from a thread of its own.
class LoopbackServer {
public:
    struct Request {
        std::string method;
        std::string target;                         // path and query, as sent
        std::map<std::string, std::string> fields;  // names in lower case
        std::string body;
    };

    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// `http://127.0.0.1:PORT` and the path.
    std::string url(const std::string& path) const;

    /// What `path` answers from here on; its length is told.
    void answer(const std::string& path, int status,
                const std::map<std::string, std::string>& fields, const std::string& body);

    /// These bytes and the end of the connection, whatever they are.
    void answerRaw(const std::string& path, const std::string& bytes);

    /// The request is read, and nothing follows until the server ends.
    void neverAnswer(const std::string& path);

    /// Requests so far. A path that was not told of answers 404.
    std::vector<Request> requests() const;

private:
    struct Reply {
        std::string bytes;
        bool never = false;
    };

    void set(const std::string& path, Reply reply);
    void serve();
    void serveConnection(int connection);

    int listener_ = -1;
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;
    std::map<std::string, Reply> replies_;  // by path
    std::vector<Request> requests_;
    std::vector<int> held_;  // used on the server's thread, and after it
    std::thread thread_;
};

/// The address of a port of the loopback that nobody listens on.
std::string refusingURL();

}  // namespace quillmere
