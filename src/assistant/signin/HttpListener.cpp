// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/HttpListener.h"

#include <httplib.h>
#include <sys/eventfd.h>

#include <QByteArrayView>

#include <atomic>
#include <charconv>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "assistant/signin/BoundedConnection.h"
#include "assistant/signin/RateLimit.h"

namespace velmora {
namespace {

constexpr auto kHost = "127.0.0.1";
constexpr auto kForm = "application/x-www-form-urlencoded";
// Sign-ins come one at a time; a few threads so that one slow client does not stand in everybody's way.
constexpr std::size_t kWorkers = 4;
constexpr std::size_t kMostWaiting = 16;
constexpr std::size_t kLongestBody = 8 * 1024;
constexpr std::size_t kLongestHead = 24 * 1024;
constexpr std::size_t kLongestPath =
    64;  // there are no longer ones here, and the library's routing is recursive
constexpr auto kPolicy = "Content-Security-Policy";
constexpr auto kNothingAllowed = "default-src 'none'; frame-ancestors 'none'";

/// The library's connection on ours.
class ConnectionStream final : public httplib::Stream {
 public:
  explicit ConnectionStream(BoundedConnection &connection) : m_connection(connection) {}

  bool is_readable() const override { return m_connection.waitReadable(); }
  bool is_writable() const override { return m_connection.waitWritable(); }
  ssize_t read(char *bytes, size_t size) override { return m_connection.read(bytes, size); }
  ssize_t write(const char *bytes, size_t size) override { return m_connection.write(bytes, size); }
  void get_remote_ip_and_port(std::string &ip, int &port) const override { ip = kHost, port = 0; }
  void get_local_ip_and_port(std::string &ip, int &port) const override { ip = kHost, port = 0; }
  socket_t socket() const override { return m_connection.socket(); }

 private:
  BoundedConnection &m_connection;
};

/// A few threads, and a short queue before them: when it is full, connections wait in the kernel.
class Workers final : public httplib::TaskQueue {
 public:
  Workers() {
    for (std::size_t i = 0; i < kWorkers; ++i) m_threads.emplace_back([this] { work(); });
  }
  void enqueue(std::function<void()> task) override {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_tasks.size() < kMostWaiting; });
    m_tasks.push_back(std::move(task));
    m_changed.notify_all();
  }
  void shutdown() override {
    {
      const std::lock_guard lock(m_mutex);
      m_ended = true;
      m_changed.notify_all();
    }
    for (std::thread &thread : m_threads) thread.join();
  }

 private:
  void work() {
    for (;;) {
      std::function<void()> task;
      {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_ended || !m_tasks.empty(); });
        if (m_tasks.empty()) return;
        task = std::move(m_tasks.front());
        m_tasks.pop_front();
        m_changed.notify_all();
      }
      task();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_tasks;
  bool m_ended = false;
  std::vector<std::thread> m_threads;
};

void refuse(httplib::Response &response, int status, const char *why) {
  response.status = status;
  response.set_header(kPolicy, kNothingAllowed);
  response.set_content(std::string(why) + '\n', "text/plain; charset=utf-8");
}

/// The length that a request declares; nothing unless it does so exactly once, and in digits only.
std::optional<std::size_t> declaredLength(const httplib::Request &request) {
  if (request.get_header_value_count("Content-Length") != 1) return std::nullopt;
  const std::string text = request.get_header_value("Content-Length");
  std::size_t length = 0;
  const char *const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, length);
  if (error == std::errc::result_out_of_range) return std::numeric_limits<std::size_t>::max();
  return error == std::errc() && rest == end ? std::optional(length) : std::nullopt;
}

/// Plain forms only: what is packed would grow in memory beyond every limit.
bool isPlainForm(const httplib::Request &request) {
  const std::string type = request.get_header_value("Content-Type");
  const std::string_view name = std::string_view(type).substr(0, type.find_first_of("; "));
  return QByteArrayView(name.data(), static_cast<qsizetype>(name.size()))
                 .compare(kForm, Qt::CaseInsensitive) == 0 &&
         !request.has_header("Content-Encoding");
}

/// Nothing of ours may be shown in a frame, guessed another type of, kept, or told to other pages.
httplib::Headers securityFields() {
  return {{"X-Content-Type-Options", "nosniff"}, {"X-Frame-Options", "DENY"},
          {"Referrer-Policy", "same-origin"},    {"Cross-Origin-Resource-Policy", "same-origin"},
          {"Cache-Control", "no-store"},         {"Pragma", "no-cache"}};
}

}  // namespace

class HttpListener::Implementation final : private httplib::Server {
 public:
  explicit Implementation(const Settings &settings)
      : m_settings(settings),
        m_rate(settings.burst, settings.requestsASecond, settings.clock()),
        m_stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    // The library would let another program of this user take the same port.
    set_socket_options([](socket_t socket) {
      const int yes = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    new_task_queue = [] { return new Workers; };
    set_payload_max_length(kLongestBody);
    set_default_headers(securityFields());
    set_pre_routing_handler([this](const auto &request, auto &response) { return check(request, response); });
    set_exception_handler([](const auto &, auto &response, const std::exception_ptr &) {
      refuse(response, 500, "The sign-in failed");
    });
    const auto route = [this](const auto &request, auto &response) { answer(request, response); };
    Get(".*", route);
    Post(".*", httplib::Server::Handler(route));
    m_port = settings.port == 0                   ? bind_to_any_port(kHost)
             : bind_to_port(kHost, settings.port) ? settings.port
                                                  : -1;
    if (m_stop < 0 || m_port <= 0) {
      throw std::runtime_error("Cannot listen on " + std::string(kHost) + ':' +
                               std::to_string(settings.port));
    }
    m_origin = std::string(kHost) + ':' + std::to_string(m_port);
  }

  ~Implementation() override {
    ::eventfd_write(m_stop, 1);
    if (m_thread.joinable()) {
      // The library forgets a stop that comes before it runs.
      while (!is_running() && !m_ended) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      stop();
      m_thread.join();
    }
    ::close(m_stop);
  }

  void start(HttpListener::Handler handler) {
    m_handler = std::move(handler);
    m_thread = std::thread([this] {
      listen_after_bind();
      m_ended = true;
    });
  }

  [[nodiscard]] int port() const { return m_port; }

 private:
  bool process_and_close_socket(socket_t socket) override {
    BoundedConnection connection(socket, m_stop, m_settings.requestLimit, kLongestHead + kLongestBody);
    ConnectionStream stream(connection);
    bool closed = false;
    const bool served = process_request(stream, true, closed, nullptr);
    if (served) connection.linger();
    return served;
  }

  HandlerResponse check(const httplib::Request &request, httplib::Response &response) {
    refuseWhatMayNotComeIn(request, response);
    return response.status == -1 ? HandlerResponse::Unhandled : HandlerResponse::Handled;
  }

  void refuseWhatMayNotComeIn(const httplib::Request &request, httplib::Response &response) {
    // A page whose name was made to lead here still names itself.
    if (request.get_header_value_count("Host") != 1) return refuse(response, 400, "One Host field is needed");
    if (request.get_header_value("Host") != m_origin) return refuse(response, 403, "This is another host");
    if (!m_rate.admit(m_settings.clock())) {
      response.set_header("Retry-After", "1");
      return refuse(response, 429, "Too many requests");
    }
    if (request.path.size() > kLongestPath) return refuse(response, 404, "There is nothing here");
    if (request.method == "GET" || request.method == "HEAD") return;
    if (request.method != "POST") {
      response.set_header("Allow", "GET, HEAD, POST");
      return refuse(response, 405, "There is no such method here");
    }
    if (request.has_header("Origin") && request.get_header_value("Origin") != "http://" + m_origin) {
      return refuse(response, 403, "This form is another page's");
    }
    const auto length = declaredLength(request);
    if (request.has_header("Transfer-Encoding") || !length)
      return refuse(response, 411, "A length is needed");
    if (*length > kLongestBody) return refuse(response, 413, "This is too long");
    if (!isPlainForm(request)) return refuse(response, 415, "Only a plain form is taken");
  }

  void answer(const httplib::Request &request, httplib::Response &response) const {
    const std::string &target = request.target;
    const std::size_t mark = target.find('?');
    HttpRequest plain{.method = request.method == "POST" ? "POST" : "GET",
                      .path = target.substr(0, mark),
                      .query = mark == std::string::npos ? std::string() : target.substr(mark + 1),
                      .body = request.body,
                      .authorization = std::nullopt,
                      .language = request.get_header_value("Accept-Language")};
    if (request.has_header("Authorization")) plain.authorization = request.get_header_value("Authorization");
    const HttpResponse given = m_handler(plain);
    response.status = given.status;
    for (const auto &[name, value] : given.fields) response.set_header(name, value);
    if (!response.has_header(kPolicy)) response.set_header(kPolicy, kNothingAllowed);
    if (!given.body.empty()) response.set_content(given.body, given.contentType);
  }

  const Settings m_settings;
  RateLimit m_rate;
  const int m_stop;
  int m_port = -1;
  std::string m_origin;  // the only Host that is right
  HttpListener::Handler m_handler;
  std::atomic<bool> m_ended = false;
  std::thread m_thread;
};

HttpListener::HttpListener(const Settings &settings)
    : m_implementation(std::make_unique<Implementation>(settings)) {}

HttpListener::~HttpListener() = default;

int HttpListener::port() const { return m_implementation->port(); }

void HttpListener::start(Handler handler) { m_implementation->start(std::move(handler)); }

}  // namespace velmora
