// What only a real server can show: how requests look on the wire, and how servers fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <deque>
#include <memory>
#include <string_view>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/URLSession/DesktopURLSession.h"
#include "Tests/Awaited.h"
#include "Tests/LoopbackServer.h"

namespace {

/// Set when the look-up of the host below has begun, and when it may end.
quillmere::Awaited<bool> lookUpBegan;
quillmere::Awaited<bool> lookUpMayEnd;

}  // namespace

// Stands before the C library's: no test asks a real name server.
extern "C" int getaddrinfo(const char* node, const char*, const addrinfo*, addrinfo**) {
    if (std::string_view(node) == "hanging.test") {
        lookUpBegan.set(true);
        lookUpMayEnd.get();
    }
    return EAI_NONAME;
}

namespace quillmere {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::SizeIs;

class HTTP : public testing::Test {
protected:
    Result<URLAnswer> ask(URLRequest request) {
        Awaited<Result<URLAnswer>> promise;
        session
            ->dataTaskWithRequest(std::move(request),
                                  [&](Result<URLAnswer> answer) { promise.set(std::move(answer)); })
            ->resume();
        return promise.get();
    }

    URLRequest to(const std::string& path) const {
        URLRequest request;
        request.url = server.url(path);
        return request;
    }

    int errorCode(URLRequest request) {
        const auto answer = ask(std::move(request));
        return answer ? 0 : answer.error().code;
    }

    static int code(URLErrorCode code) { return static_cast<int>(code); }

    DesktopDispatch dispatch;
    LoopbackServer server;
    std::unique_ptr<URLSession> session = std::make_unique<DesktopURLSession>(dispatch);
};

TEST_F(HTTP, ARequestReachesTheServerAsItWasAsked) {
    server.answer("/inquiry", 200, {}, "");
    URLRequest request = to("/inquiry?title=%E3%81%82&desc=a%20b&c=d+e");
    request.httpMethod = "POST";
    request.allHTTPHeaderFields = {{"x-api-key", "secret"}, {"X-Empty", ""}};
    ASSERT_TRUE(ask(request));
    const std::string body(100'000, 'b');
    for (const char c : body) request.httpBody.push_back(static_cast<std::byte>(c));
    ASSERT_TRUE(ask(request));
    const auto requests = server.requests();
    ASSERT_THAT(requests, SizeIs(2));
    for (const auto& received : requests) {
        EXPECT_EQ(received.method, "POST");
        EXPECT_EQ(received.target, "/inquiry?title=%E3%81%82&desc=a%20b&c=d+e");
        EXPECT_THAT(received.fields, Contains(Pair("x-api-key", "secret")));
        EXPECT_THAT(received.fields, Contains(Pair("x-empty", "")));
        EXPECT_THAT(received.fields, Not(Contains(Key("content-type"))));
    }
    EXPECT_EQ(requests[0].body, "");
    EXPECT_THAT(requests[0].fields, Contains(Pair("content-length", "0")));
    EXPECT_EQ(requests[1].body, body);

    request.allHTTPHeaderFields = {{"Content-Type", "text/plain"}};
    ASSERT_TRUE(ask(request));
    EXPECT_THAT(server.requests().back().fields, Contains(Pair("content-type", "text/plain")));
}

TEST_F(HTTP, MethodsKeepTheirName) {
    server.answer("/path", 200, {}, "");
    for (const char* method : {"GET", "HEAD", "PUT", "DELETE"}) {
        URLRequest request = to("/path");
        request.httpMethod = method;
        EXPECT_TRUE(ask(request)) << method;
        EXPECT_EQ(server.requests().back().method, method);
    }
}

TEST_F(HTTP, AHeaderFieldCannotSmuggleInAnother) {
    for (const auto& [name, value] : std::map<std::string, std::string>{
             {"x-key", "a\r\nx-other: b"}, {"x-key\r\nx-other", "b"}, {"", "a"}, {"x key", "a"}}) {
        URLRequest request = to("/path");
        request.allHTTPHeaderFields = {{name, value}};
        EXPECT_EQ(errorCode(request), code(URLErrorCode::badURL)) << name << ": " << value;
    }
    URLRequest request = to("/path");
    request.httpMethod = "GET /other HTTP/1.1\r\n";
    EXPECT_EQ(errorCode(request), code(URLErrorCode::badURL));
    EXPECT_EQ(errorCode(to("/a b")), code(URLErrorCode::badURL));
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(HTTP, RepeatedFieldsAreJoinedAndNamesAreInLowerCase) {
    server.answerRaw("/path",
                     "HTTP/1.1 200 OK\r\nVia: a\r\nX-Mixed: Value\r\nVIA: b\r\n"
                     "Content-Length: 0\r\nConnection: close\r\n\r\n");
    const auto answer = ask(to("/path"));
    ASSERT_TRUE(answer);
    EXPECT_THAT(answer->response->allHeaderFields, Contains(Pair("via", "a, b")));
    EXPECT_THAT(answer->response->allHeaderFields, Contains(Pair("x-mixed", "Value")));
}

TEST_F(HTTP, AServerThatFailsIsAnErrorOfItsKind) {
    const std::string whole = "HTTP/1.1 200 OK\r\nConnection: close\r\n";
    struct Case {
        const char* what;
        std::string bytes;
        URLErrorCode expected;
    };
    const Case cases[] = {
        {"nothing", "", URLErrorCode::networkConnectionLost},
        {"cut off in the header", "HTTP/1.1 200 OK\r\nConte", URLErrorCode::networkConnectionLost},
        {"cut off in the body", whole + "Content-Length: 10\r\n\r\n12345",
         URLErrorCode::networkConnectionLost},
        {"cut off between chunks", whole + "Transfer-Encoding: chunked\r\n\r\n5\r\n12345\r\n",
         URLErrorCode::networkConnectionLost},
        {"no HTTP", "SSH-2.0-OpenSSH\r\n", URLErrorCode::badServerResponse},
        {"10 MB whose length is told",
         whole + "Content-Length: 10000000\r\n\r\n" + std::string(10'000'000, 'x'),
         URLErrorCode::dataLengthExceedsMaximum},
        {"10 MB whose length is not told", whole + "\r\n" + std::string(10'000'000, 'x'),
         URLErrorCode::dataLengthExceedsMaximum},
        {"a header without end",
         whole + std::string(4000, 'a') + ": " + std::string(90'000, 'b') +
             "\r\nb: " + std::string(90'000, 'b') + "\r\nc: " + std::string(90'000, 'b') + "\r\n",
         URLErrorCode::dataLengthExceedsMaximum},
    };
    for (const Case& c : cases) {
        server.answerRaw("/path", c.bytes);
        EXPECT_EQ(errorCode(to("/path")), code(c.expected)) << c.what;
    }
    URLRequest refused;
    refused.url = refusingURL();
    EXPECT_EQ(errorCode(refused), code(URLErrorCode::cannotConnectToHost));
    refused.url = "http://unknown.test/";
    EXPECT_EQ(errorCode(refused), code(URLErrorCode::cannotFindHost));
}

TEST_F(HTTP, AServerThatStaysSilentEndsWithTheTime) {
    server.neverAnswer("/never");
    URLRequest request = to("/never");
    request.timeoutInterval = 20ms;
    EXPECT_EQ(errorCode(request), code(URLErrorCode::timedOut));
}

TEST_F(HTTP, RedirectsOfAGetAreFollowedAFewTimes) {
    server.answer("/0", 301, {{"Location", "/1"}}, "");
    server.answer("/1", 302, {{"Location", server.url("/2")}}, "");
    server.answer("/2", 307, {{"Location", "3"}}, "ignored");
    server.answer("/3", 200, {}, "there");
    URLRequest request = to("/0");
    request.allHTTPHeaderFields = {{"x-api-key", "secret"}};
    const auto answer = ask(request);
    ASSERT_TRUE(answer) << answer.error().localizedDescription;
    EXPECT_EQ(answer->response->statusCode, 200);
    EXPECT_EQ(answer->data.size(), 5u);
    EXPECT_THAT(server.requests().back().fields, Contains(Key("x-api-key")));

    server.answer("/loop", 302, {{"Location", "/loop"}}, "");
    EXPECT_EQ(errorCode(to("/loop")), code(URLErrorCode::httpTooManyRedirects));
    EXPECT_THAT(server.requests(), SizeIs(4 + 6));

    for (const char* target : {"file:///etc/passwd", "ftp://127.0.0.1/", "http://"}) {
        server.answer("/0", 302, {{"Location", target}}, "");
        EXPECT_EQ(errorCode(to("/0")), code(URLErrorCode::badServerResponse)) << target;
    }
}

TEST_F(HTTP, ARedirectToAnotherServerDoesNotHandOverTheKey) {
    LoopbackServer other;
    other.answer("/1", 302, {{"Location", other.url("/2")}}, "");
    other.answer("/2", 200, {}, "");
    server.answer("/0", 302, {{"Location", other.url("/1")}}, "");
    URLRequest request = to("/0");
    request.allHTTPHeaderFields = {{"x-api-key", "secret"}};
    ASSERT_TRUE(ask(request));
    ASSERT_THAT(other.requests(), SizeIs(2));
    for (const auto& received : other.requests()) {
        EXPECT_THAT(received.fields, Not(Contains(Key("x-api-key"))));
    }
}

TEST_F(HTTP, ARedirectOfAPostIsItsAnswer) {
    server.answer("/0", 302, {{"Location", "/1"}}, "");
    URLRequest request = to("/0");
    request.httpMethod = "POST";
    const auto answer = ask(request);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->response->statusCode, 302);
    EXPECT_THAT(server.requests(), SizeIs(1)) << "the text would be lost on the way";
}

TEST_F(HTTP, TheSessionsEndDoesNotWaitForALookUpThatHangs) {
    URLRequest request;
    request.url = "http://hanging.test/";
    Awaited<int> promise;
    session
        ->dataTaskWithRequest(
            request,
            [&](const Result<URLAnswer>& answer) { promise.set(answer ? 0 : answer.error().code); })
        ->resume();
    lookUpBegan.get();
    session.reset();
    EXPECT_EQ(promise.get(), code(URLErrorCode::cancelled));
    lookUpMayEnd.set(true);
}

TEST_F(HTTP, ManyRequestsGoSideBySide) {
    server.answer("/path", 200, {}, "whole");
    constexpr int count = 20;
    std::deque<Awaited<bool>> done(count);
    for (auto& promise : done) {
        session
            ->dataTaskWithRequest(to("/path"),
                                  [&](const Result<URLAnswer>& answer) {
                                      promise.set(answer && answer->data.size() == 5);
                                  })
            ->resume();
    }
    for (auto& promise : done) EXPECT_TRUE(promise.get());
}

}  // namespace
}  // namespace quillmere
