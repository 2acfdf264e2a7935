// Web views over WebKitGTK 4.1, inside the game window on X11.
// Implements: a view per slot as a GTK popup window reparented into the game
// window at its rectangle, so the X server hands clicks and keys straight to
// the page (a click gives the view the keyboard focus); navigation and the
// blank page as home; each navigation's target told before it happens (the
// engine's policy decision, never refused); GTK's loop run from the game's
// pump without blocking.
// Leaves out: other window systems than X11 (no view is made, said once in the
// log), new windows a page asks for (not opened), and moving a shown view.
#include <SDL.h>
#include <SDL_syswm.h>
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <cstdio>

#include "platform/web/web_view.h"

namespace vostan::platform {

std::unique_ptr<WebSystem> makeDefaultWebSystem();

namespace {

std::u16string toUtf16(const char* utf8) {
  std::u16string out;
  glong length = 0;
  gunichar2* wide = g_utf8_to_utf16(utf8 ? utf8 : "", -1, nullptr, &length, nullptr);
  if (wide) out.assign(reinterpret_cast<const char16_t*>(wide), static_cast<size_t>(length));
  g_free(wide);
  return out;
}

class WebKitView final : public WebView {
 public:
  WebKitView(GtkWidget* window, WebKitWebView* web, WebViewListener* listener)
      : window_(window), web_(web), listener_(listener) {
    g_signal_connect(web_, "decide-policy", G_CALLBACK(onDecidePolicy), this);
    g_signal_connect(web_, "button-press-event", G_CALLBACK(onButtonPress), this);
  }

  ~WebKitView() override {
    g_signal_handlers_disconnect_by_data(web_, this);
    gtk_widget_destroy(window_);
  }

  void navigate(const std::u16string& url) override {
    gchar* utf8 = g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(url.data()),
                                  static_cast<glong>(url.size()), nullptr, nullptr, nullptr);
    if (utf8) webkit_web_view_load_uri(web_, utf8);
    g_free(utf8);
  }

  void goHome() override { webkit_web_view_load_uri(web_, "about:blank"); }

 private:
  static gboolean onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                 WebKitPolicyDecisionType type, gpointer self) {
    if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
      WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
          WEBKIT_NAVIGATION_POLICY_DECISION(decision));
      WebKitURIRequest* request = webkit_navigation_action_get_request(action);
      static_cast<WebKitView*>(self)->listener_->beforeNavigate(
          toUtf16(webkit_uri_request_get_uri(request)));
    }
    return FALSE;  // the engine's own decision: navigations go ahead
  }

  // The window manager never gives a window inside another one the focus:
  // a click takes it, so typing reaches the page.
  static gboolean onButtonPress(GtkWidget* widget, GdkEvent*, gpointer self) {
    auto* view = static_cast<WebKitView*>(self);
    GdkWindow* gdk = gtk_widget_get_window(view->window_);
    XSetInputFocus(GDK_WINDOW_XDISPLAY(gdk), GDK_WINDOW_XID(gdk), RevertToParent, CurrentTime);
    gtk_widget_grab_focus(widget);
    return FALSE;
  }

  GtkWidget* window_;
  WebKitWebView* web_;
  WebViewListener* listener_;
};

class WebKitSystem final : public WebSystem {
 public:
  std::unique_ptr<WebView> create(WindowHandle parent, int x, int y, int width, int height,
                                  WebViewListener* listener) override {
    SDL_Window* window = SDL_GetWindowFromID(parent);
    if (!window) return nullptr;
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (!SDL_GetWindowWMInfo(window, &info) || info.subsystem != SDL_SYSWM_X11) {
      sayOnce("web views need an X11 window: none is shown");
      return nullptr;
    }
    if (!startGtk()) return nullptr;

    GtkWidget* popup = gtk_window_new(GTK_WINDOW_POPUP);
    gtk_widget_set_size_request(popup, width, height);
    GtkWidget* web = webkit_web_view_new();
    gtk_container_add(GTK_CONTAINER(popup), web);
    // Once reparented, the window's place counts from the game window's corner.
    gtk_window_move(GTK_WINDOW(popup), x, y);
    gtk_widget_realize(popup);
    GdkWindow* gdk = gtk_widget_get_window(popup);
    XReparentWindow(GDK_WINDOW_XDISPLAY(gdk), GDK_WINDOW_XID(gdk), info.info.x11.window, x, y);
    gtk_widget_show_all(popup);
    gdk_display_flush(gdk_window_get_display(gdk));
    return std::make_unique<WebKitView>(popup, WEBKIT_WEB_VIEW(web), listener);
  }

  void pump() override {
    if (started_ != 1) return;
    // Bounded, so a busy page cannot hold the game's frame.
    for (int i = 0; i < 200 && g_main_context_iteration(nullptr, FALSE); i++) {
    }
  }

 private:
  bool startGtk() {
    if (started_ == 0) {
      gdk_set_allowed_backends("x11");
      started_ = gtk_init_check(nullptr, nullptr) ? 1 : -1;
      if (started_ < 0) sayOnce("GTK could not start: no web views");
    }
    return started_ == 1;
  }

  void sayOnce(const char* what) {
    if (said_) return;
    said_ = true;
    std::printf("%s\n", what);
  }

  int started_ = 0;
  bool said_ = false;
};

}  // namespace

std::unique_ptr<WebSystem> makeDefaultWebSystem() {
  return std::make_unique<WebKitSystem>();
}

}  // namespace vostan::platform
