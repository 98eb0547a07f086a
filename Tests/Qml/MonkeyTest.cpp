// Somebody who presses whatever there is, again and again. QUILLMERE_MONKEY_SECONDS says how long
// (a minute without it), QUILLMERE_MONKEY_SEED which somebody it is.
#include <malloc.h>

#include <QElapsedTimer>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

int numberNamed(const char* variable, int otherwise) {
    const char* text = std::getenv(variable);
    return text ? std::atoi(text) : otherwise;
}

/// Without what the allocator keeps for later.
int usedMiB() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<int>((heap.uordblks + heap.hblkhd) >> 20);
}

int residentMiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) return std::stoi(line.substr(6)) / 1024;
    }
    return 0;
}

/// What would leave the application: a program of the system, which is not what is tested.
bool leadsOut(const QString& text) {
    for (const char* key : {"Contact", "MoreApps", "WriteReview", "ShareOpenWith", "ShareMail"}) {
        if (text == AppUnderTest::shared().bridge().text(key)) return true;
    }
    return false;
}

class Monkey {
public:
    explicit Monkey(unsigned seed) : random_(seed) {}

    void act() {
        const int choice = upTo(100);
        if (choice < 70) return clickAControl();
        if (choice < 85) return pressAKey();
        if (choice < 97) return app_.drag(somewhere(), somewhere());
        const QSize sizes[] = {{360, 640}, {1120, 780}, {1920, 1080}};
        app_.window().resize(sizes[upTo(3)]);
    }

    /// Where nothing is kept but the networks.
    void goHome() {
        // Whatever is under way: a way back that asks is not taken here.
        app_.composition().home().isShowingDetailView.set(false);
        QTest::qWait(500);
    }

private:
    int upTo(int end) { return std::uniform_int_distribution(0, end - 1)(random_); }
    QPointF somewhere() {
        return QPointF(upTo(app_.window().width()), upTo(app_.window().height()));
    }
    void collect(QQuickItem* item, std::vector<QPointF>& middles) {
        if (!item->isVisible() || !item->isEnabled()) return;
        if (item->inherits("QQuickAbstractButton") && item->width() > 0 &&
            !leadsOut(item->property("text").toString())) {
            middles.push_back(AppUnderTest::middleOf(*item));
        }
        for (QQuickItem* child : item->childItems()) collect(child, middles);
    }
    void clickAControl() {
        std::vector<QPointF> middles;
        collect(app_.window().contentItem(), middles);
        if (middles.empty()) return;
        const QPointF at =
            middles[static_cast<std::size_t>(upTo(static_cast<int>(middles.size())))];
        QTest::mouseClick(&app_.window(), Qt::LeftButton, {}, at.toPoint());
    }
    void pressAKey() {
        const Qt::Key keys[] = {Qt::Key_Tab,  Qt::Key_Tab,   Qt::Key_Return, Qt::Key_Escape,
                                Qt::Key_Left, Qt::Key_Right, Qt::Key_Space,  Qt::Key_Plus};
        app_.press(keys[upTo(std::size(keys))]);
    }

    std::mt19937 random_;
    AppUnderTest& app_ = AppUnderTest::shared();
};

TEST(MonkeyTest, NothingThatSomebodyPressesBreaksTheWindow) {
    const int seconds = numberNamed("QUILLMERE_MONKEY_SECONDS", 60);
    const int seed = numberNamed("QUILLMERE_MONKEY_SEED", 1);
    Monkey monkey(static_cast<unsigned>(seed));
    QElapsedTimer time;
    time.start();
    int acts = 0;
    for (qint64 told = 0; time.elapsed() < seconds * 1000LL; ++acts) {
        monkey.act();
        QTest::qWait(20);
        if (time.elapsed() / 60'000 == told) continue;
        told = time.elapsed() / 60'000;
        std::cout << told << " min: " << acts << " acts, " << residentMiB() << " MiB";
        monkey.goHome();
        std::cout << ", at home " << residentMiB() << " MiB, " << usedMiB() << " in use"
                  << std::endl;
    }
    EXPECT_GT(acts, seconds / 2) << "the window hardly answered; seed " << seed;
    EXPECT_LT(usedMiB(), 1200) << "at home; seed " << seed;
}

}  // namespace
}  // namespace quillmere
