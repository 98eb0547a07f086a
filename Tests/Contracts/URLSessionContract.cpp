// What every implementation of `URLSession` owes its callers, on the fake and over real sockets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/URLSession/DesktopURLSession.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeURLSession.h"
#include "Tests/LoopbackServer.h"

namespace quillmere {
namespace {

using testing::Contains;
using testing::Pair;

std::vector<std::byte> bytesOf(const std::string& text) {
    const auto* first = reinterpret_cast<const std::byte*>(text.data());
    return {first, first + text.size()};
}

enum class Kind { fake, desktop };

class URLSessionContract : public testing::TestWithParam<Kind> {
protected:
    URLSessionContract() {
        if (GetParam() == Kind::fake) {
            auto made = std::make_unique<FakeURLSession>(dispatch);
            fake = made.get();
            session = std::move(made);
        } else {
            session = std::make_unique<DesktopURLSession>(dispatch);
        }
    }

    void serve(const std::string& path, int status,
               const std::map<std::string, std::string>& fields, const std::string& body) {
        server.answer(path, status, fields, body);
        if (!fake) return;
        HTTPURLResponse response{status, {}};
        for (const auto& [name, value] : fields) response.allHeaderFields[name] = value;
        fake->answers.insert_or_assign(server.url(path), URLAnswer{bytesOf(body), response});
    }

    void neverServe(const std::string& path) {
        server.neverAnswer(path);
        if (fake) fake->neverAnswered.insert(server.url(path));
    }

    std::size_t requestsReceived() const {
        return fake ? fake->requests().size() : server.requests().size();
    }

    /// The answer, once it is there.
    Result<URLAnswer> ask(URLRequest request) {
        Awaited<Result<URLAnswer>> promise;
        session
            ->dataTaskWithRequest(std::move(request),
                                  [&](Result<URLAnswer> answer) { promise.set(std::move(answer)); })
            ->resume();
        return promise.get();
    }

    static URLRequest get(std::string url) {
        URLRequest request;
        request.url = std::move(url);
        return request;
    }

    DesktopDispatch dispatch;
    LoopbackServer server;
    std::unique_ptr<URLSession> session;
    FakeURLSession* fake = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Both, URLSessionContract, testing::Values(Kind::fake, Kind::desktop),
                         [](const auto& kind) {
                             return kind.param == Kind::fake ? "Fake" : "Desktop";
                         });

TEST_P(URLSessionContract, AnAnswerArrivesWithStatusFieldsAndBodyWhateverItsStatus) {
    for (const int status : {200, 201, 404, 500}) {
        const std::string body("a\0b\r\n\xff", 6);
        serve("/path", status, {{"etag", "\"1\""}}, body);
        const auto answer = ask(get(server.url("/path")));
        ASSERT_TRUE(answer) << answer.error().localizedDescription;
        ASSERT_TRUE(answer->response);
        EXPECT_EQ(answer->response->statusCode, status);
        EXPECT_THAT(answer->response->allHeaderFields, Contains(Pair("etag", "\"1\"")));
        EXPECT_EQ(answer->data, bytesOf(body));
    }
}

TEST_P(URLSessionContract, NothingIsAskedBeforeResumeAndOnlyOnceAfterIt) {
    serve("/path", 200, {}, "");
    std::atomic<int> calls = 0;
    Awaited<std::thread::id> thread;
    const auto task =
        session->dataTaskWithRequest(get(server.url("/path")), [&](const Result<URLAnswer>&) {
            if (++calls == 1) thread.set(std::this_thread::get_id());
        });
    EXPECT_EQ(requestsReceived(), 0u);
    task->resume();
    task->resume();
    EXPECT_NE(thread.get(), std::this_thread::get_id());
    EXPECT_EQ(requestsReceived(), 1u);
    session.reset();
    EXPECT_EQ(calls, 1);
}

TEST_P(URLSessionContract, TheBodyMayBeAsLongAsAllowedAndNotLonger) {
    serve("/path", 200, {}, std::string(1000, 'x'));
    URLRequest request = get(server.url("/path"));
    request.maximumDataLength = 1000;
    EXPECT_TRUE(ask(request));
    request.maximumDataLength = 999;
    const auto answer = ask(request);
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().domain, URLSession::errorDomain);
    EXPECT_EQ(answer.error().code, static_cast<int>(URLErrorCode::dataLengthExceedsMaximum));
    EXPECT_FALSE(answer.error().localizedDescription.empty());
}

TEST_P(URLSessionContract, OtherProtocolsAndMalformedAddressesAreErrors) {
    const std::pair<const char*, URLErrorCode> cases[] = {
        {"file:///etc/passwd", URLErrorCode::unsupportedURL},
        {"ftp://127.0.0.1/a", URLErrorCode::unsupportedURL},
        {"127.0.0.1/a", URLErrorCode::badURL},
        {"", URLErrorCode::badURL},
    };
    for (const auto& [url, code] : cases) {
        const auto answer = ask(get(url));
        ASSERT_FALSE(answer) << url;
        EXPECT_EQ(answer.error().code, static_cast<int>(code)) << url;
    }
}

TEST_P(URLSessionContract, TheSessionsEndCancelsARequestThatWaits) {
    neverServe("/path");
    std::atomic<int> code = 0;
    const auto task = session->dataTaskWithRequest(
        get(server.url("/path")),
        [&](const Result<URLAnswer>& answer) { code = answer ? 1 : answer.error().code; });
    task->resume();
    session.reset();
    EXPECT_EQ(code, static_cast<int>(URLErrorCode::cancelled)) << "the handler came late";
    task->resume();
}

TEST_P(URLSessionContract, ATaskThatIsResumedAfterTheSessionsEndDoesNothing) {
    const auto task = session->dataTaskWithRequest(get(server.url("/path")),
                                                   [](const Result<URLAnswer>&) { ADD_FAILURE(); });
    session.reset();
    task->resume();
}

TEST_P(URLSessionContract, AHandlerMayEndTheSession) {
    serve("/path", 200, {}, "");
    Awaited<bool> ended;
    session
        ->dataTaskWithRequest(get(server.url("/path")),
                              [&](const Result<URLAnswer>&) {
                                  session.reset();
                                  ended.set(true);
                              })
        ->resume();
    ended.get();
}

}  // namespace
}  // namespace quillmere
