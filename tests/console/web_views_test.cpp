// The web view slots over the scriptable web system: selection, showing at a
// place, hiding, URLs kept and followed, and a build with no web engine.
#include "console/web_views.h"

#include <gtest/gtest.h>

#include "console/win_console.h"
#include "console_fixture.h"
#include "platform/web/fake_web_system.h"

namespace vostan {
namespace {

class WebViewsTest : public test::ConsoleFixture {
 protected:
  void SetUp() override {
    ConsoleFixture::SetUp();
    platform::setWebSystem(&web);
    ASSERT_TRUE(console->createWindow("Game", 640, 480, 1));
  }
  void TearDown() override {
    for (WebSlot& s : console->webSlots) s.view.reset();
    platform::setWebSystem(nullptr);
    ConsoleFixture::TearDown();
  }
  std::string url() {
    const std::u16string* u = web::url(*console);
    return u ? std::string(u->begin(), u->end()) : "(null)";
  }
  void setUrl(const std::u16string& u) { web::setUrl(*console, u.data(), u.size()); }

  platform::FakeWebSystem web;
};

TEST_F(WebViewsTest, SlotsAreSelectedInRangeAndKeepTheirOwnUrls) {
  EXPECT_EQ(url(), "(null)");
  web::select(*console, 3);
  setUrl(u"file:///three.html");
  web::select(*console, 10);
  web::select(*console, -1);
  EXPECT_EQ(console->selectedWebSlot, 3);
  EXPECT_EQ(url(), "file:///three.html");
  web::select(*console, 9);
  EXPECT_EQ(url(), "(null)");
  setUrl(u"file:///nine.html");
  web::setUrl(*console, nullptr, 0);
  EXPECT_EQ(url(), "(null)");
  EXPECT_TRUE(web.calls.empty());  // hidden slots only store
}

TEST_F(WebViewsTest, AShowingGoesToTheStoredUrlOrHomeAndKeepsItsFirstPlace) {
  web::show(*console, 10, 20, 300, 200);
  web::show(*console, 50, 60, 100, 100);  // shown: not moved
  web::select(*console, 1);
  setUrl(u"file:///one.html");
  web::show(*console, 5, 5, 64, 48);
  ASSERT_EQ(web.views.size(), 2u);
  EXPECT_EQ(web.views[0].parent, console->window);
  EXPECT_EQ(
      (std::vector<int>{web.views[0].x, web.views[0].y, web.views[0].width, web.views[0].height}),
      (std::vector<int>{10, 20, 300, 200}));
  EXPECT_EQ(web.calls, (std::vector<std::string>{"0 create", "0 home", "1 create",
                                                 "1 navigate file:///one.html"}));

  // A shown view goes at once; a link followed in the page becomes the URL.
  setUrl(u"file:///two.html");
  web.views[1].listener->beforeNavigate(u"file:///linked.html");
  EXPECT_EQ(url(), "file:///linked.html");
  EXPECT_EQ(web.calls.back(), "1 navigate file:///two.html");

  // Hiding destroys the view but keeps the URL; the next showing is a new view there.
  web::hide(*console);
  EXPECT_FALSE(web.views[1].alive);
  EXPECT_EQ(url(), "file:///linked.html");
  web::hide(*console);
  web::show(*console, 5, 5, 64, 48);
  EXPECT_EQ(web.calls.back(), "2 navigate file:///linked.html");
  web::select(*console, 0);
  EXPECT_TRUE(web.views[0].alive);
}

TEST_F(WebViewsTest, ViewsArePumpedOnlyWhileOneStandsAndGoWithTheWindow) {
  console->update(events);
  EXPECT_EQ(web.pumps, 0);
  web::show(*console, 0, 0, 10, 10);
  console->update(events);
  console->update(events);
  EXPECT_EQ(web.pumps, 2);

  console->destroyDisplay(false);
  EXPECT_FALSE(web.views[0].alive);
  web::show(*console, 0, 0, 10, 10);  // the slot still counts as shown until hidden
  EXPECT_EQ(web.views.size(), 1u);
  web::hide(*console);
  web::show(*console, 0, 0, 10, 10);
  EXPECT_EQ(web.views.size(), 2u);
}

TEST_F(WebViewsTest, WithoutAWebEngineSlotsStillKeepTheirUrls) {
  web.noEngine = true;
  setUrl(u"file:///a.html");
  web::show(*console, 0, 0, 10, 10);
  setUrl(u"file:///b.html");
  EXPECT_EQ(url(), "file:///b.html");
  web::hide(*console);
  EXPECT_TRUE(web.calls.empty());
}

}  // namespace
}  // namespace vostan
