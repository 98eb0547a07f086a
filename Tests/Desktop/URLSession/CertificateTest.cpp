// Whom the session trusts, shown on a server with a certificate of its own.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/URLSession/DesktopURLSession.h"
#include "Tests/Awaited.h"
#include "Tests/LoopbackServer.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

/// Runs `openssl` in `folder` with its output going to `output`.
pid_t startOpenSSL(const TemporaryFolder& folder, std::vector<std::string> arguments, int output) {
    arguments.insert(arguments.begin(), "openssl");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, STDIN_FILENO);
        dup2(output < 0 ? nothing : output, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
        if (chdir(folder.path().c_str()) == 0) execvp(argv[0], argv.data());
        _exit(127);
    }
    return process;
}

/// Serves the files of a folder over TLS; each file is a whole answer.
class SecureServer {
public:
    SecureServer() {
        makeCertificate();
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) ADD_FAILURE() << "no pipe";
        process_ = startOpenSSL(folder,
                                {"s_server", "-accept", "127.0.0.1:0", "-cert", "certificate.pem",
                                 "-key", "key.pem", "-HTTP"},
                                ends[1]);
        close(ends[1]);
        // "ACCEPT 127.0.0.1:PORT"
        std::string text;
        char letter = 0;
        while (text.find("ACCEPT ") == std::string::npos || letter != '\n') {
            if (read(ends[0], &letter, 1) != 1) break;
            text += letter;
        }
        const std::size_t start = text.find("127.0.0.1");
        if (start == std::string::npos) {
            ADD_FAILURE() << "the secure server did not start: " << text;
        } else {
            address_ = text.substr(start, text.find('\n', start) - start);
        }
        output_ = ends[0];
    }

    ~SecureServer() {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
        close(output_);
    }

    SecureServer(const SecureServer&) = delete;
    SecureServer& operator=(const SecureServer&) = delete;

    std::string url(const std::string& path) const { return "https://" + address_ + path; }

    TemporaryFolder folder;

private:
    void makeCertificate() const {
        const pid_t process = startOpenSSL(
            folder,
            {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
             "-keyout", "key.pem", "-out", "certificate.pem", "-days", "2", "-subj", "/CN=loopback",
             "-addext", "subjectAltName=IP:127.0.0.1"},
            -1);
        int status = -1;
        waitpid(process, &status, 0);
        EXPECT_EQ(status, 0) << "no certificate";
    }

    pid_t process_ = -1;
    int output_ = -1;
    std::string address_;
};

Result<URLAnswer> ask(URLSession& session, const std::string& url) {
    URLRequest request;
    request.url = url;
    Awaited<Result<URLAnswer>> promise;
    session
        .dataTaskWithRequest(request,
                             [&](Result<URLAnswer> answer) { promise.set(std::move(answer)); })
        ->resume();
    return promise.get();
}

class Certificates : public testing::Test {
protected:
    DesktopDispatch dispatch;
    SecureServer server;
};

TEST_F(Certificates, ACertificateThatNobodyVouchesForIsRefused) {
    server.folder.write("page", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    DesktopURLSession stranger(dispatch);
    const auto refused = ask(stranger, server.url("/page"));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, static_cast<int>(URLErrorCode::serverCertificateUntrusted));

    DesktopURLSession knowing(dispatch, server.folder / "certificate.pem");
    const auto answer = ask(knowing, server.url("/page"));
    ASSERT_TRUE(answer) << answer.error().localizedDescription;
    EXPECT_EQ(answer->data.size(), 2u);
}

TEST_F(Certificates, ARedirectFromASecureAddressToAnInsecureOneIsRefused) {
    LoopbackServer insecure;
    insecure.answer("/page", 200, {}, "anybody may have written this");
    server.folder.write("page", "HTTP/1.1 302 Found\r\nLocation: " + insecure.url("/page") +
                                    "\r\nContent-Length: 0\r\n\r\n");
    DesktopURLSession session(dispatch, server.folder / "certificate.pem");
    const auto refused = ask(session, server.url("/page"));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code,
              static_cast<int>(URLErrorCode::appTransportSecurityRequiresSecureConnection));
    EXPECT_TRUE(insecure.requests().empty());
}

TEST_F(Certificates, AServerThatSpeaksNoTLSIsAnError) {
    LoopbackServer plain;
    plain.answerRaw("/", "no TLS");
    DesktopURLSession session(dispatch);
    std::string url = plain.url("/");
    url.replace(0, 4, "https");
    EXPECT_EQ(ask(session, url).error().code,
              static_cast<int>(URLErrorCode::secureConnectionFailed));
}

}  // namespace
}  // namespace quillmere
