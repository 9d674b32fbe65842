#include "cli/viewer/Server.h"

#include "cli/options/CommonOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <climits>
#include <microhttpd.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

using std::chrono::seconds;

constexpr seconds kToAsk{10};    // for a request to be there whole
constexpr unsigned kToRead = 60; // seconds in which something of an answer has to be taken
constexpr seconds kToReturn{5};  // for a page that is loaded again, or another one
constexpr seconds kToCome{300};  // for the first page in a browser that was asked for it
constexpr seconds kBetweenTells{7};
constexpr unsigned kMostConnections = 128;
constexpr size_t kMostSilent = 32; // connections without a request; one more, and the oldest is closed
constexpr size_t kMostHeader = size_t{32} << 10; // bytes of a connection's memory

constexpr uint16_t kUnsaidPort = 80; // browsers leave it out

constexpr std::string_view kEventStream = "text/event-stream";
constexpr std::string_view kComment = "retry: 1000\n: here\n\n";

constexpr std::pair<const char *, const char *> kHeaders[] = {
    {"Cache-Control", "no-store"},
    {"Connection", "close"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self'; img-src 'self' blob:; "
     "worker-src 'self'; connect-src 'self'; manifest-src 'self'; base-uri 'none'; form-action 'none'; "
     "frame-ancestors 'none'"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
};

sockaddr_in AddressOf(uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// Returns -1 with errno set when the port cannot be had.
int Listen(uint16_t port)
{
    const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int yes = 1; // connections of an earlier run may still be ending
    const sockaddr_in address = AddressOf(port);
    if (opened < 0 || (setsockopt(opened, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0 &&
                       bind(opened, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
                       listen(opened, SOMAXCONN) == 0))
        return opened;
    const int error = errno;
    close(opened);
    errno = error;
    return -1;
}

uint16_t PortOf(int listening)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    (void)getsockname(listening, reinterpret_cast<sockaddr *>(&address), &size);
    return ntohs(address.sin_port);
}

std::string MakeSecret()
{
    std::array<unsigned char, 16> bytes;
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw EarlyEnd(Status::InputFailed,
                       fmt::format("no random numbers, {}: try again", SystemText(errno)));
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

// It takes as long whatever is there, so that nobody finds the path piece by piece.
bool BeginsWithSecret(std::string_view path, std::string_view secret)
{
    unsigned differs = path.size() < secret.size() ? 1 : 0;
    for (size_t i = 0; i < std::min(path.size(), secret.size()); ++i)
        differs |= static_cast<unsigned char>(path[i] ^ secret[i]);
    return differs == 0;
}

using Response = std::unique_ptr<MHD_Response, void (*)(MHD_Response *)>;

// The bytes stay where they are until it is gone.
Response MakeResponse(std::span<const std::byte> bytes)
{
    // The library takes them as something that it might change, and does not.
    void *first = const_cast<std::byte *>(bytes.data());
    return {MHD_create_response_from_buffer(bytes.size(), first, MHD_RESPMEM_PERSISTENT),
            MHD_destroy_response};
}

MHD_Result Send(MHD_Connection *connection, unsigned status, std::string_view type, const Response &response)
{
    if (response == nullptr)
        return MHD_NO;
    for (const auto &[name, value] : kHeaders)
        (void)MHD_add_response_header(response.get(), name, value);
    (void)MHD_add_response_header(response.get(), "Content-Type", std::string(type).c_str());
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED)
        (void)MHD_add_response_header(response.get(), "Allow", "GET, HEAD");
    return MHD_queue_response(connection, status, response.get());
}

// Answers with a line of text and nothing else.
MHD_Result Refuse(MHD_Connection *connection, unsigned status)
{
    static constexpr std::string_view kRefused = "not here\n";
    return Send(connection, status, "text/plain; charset=utf-8",
                MakeResponse(std::as_bytes(std::span(kRefused))));
}

int SocketOf(MHD_Connection *connection)
{
    return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

} // namespace

struct Server::Library {
    static void Notify(void *server, MHD_Connection *connection, void **, MHD_ConnectionNotificationCode code)
    {
        const int socket = SocketOf(connection);
        if (code == MHD_CONNECTION_NOTIFY_STARTED)
            static_cast<Server *>(server)->AddSilent(socket);
        else
            static_cast<Server *>(server)->TakeSilent(socket);
    }

    static MHD_Result Answer(void *server, MHD_Connection *connection, const char *path, const char *method,
                             const char *, const char *, size_t *, void **)
    {
        try {
            return static_cast<Server *>(server)->Answer(connection, path, method) != 0 ? MHD_YES : MHD_NO;
        } catch (const std::bad_alloc &) {
            return MHD_NO; // which closes the connection
        }
    }

    // Gives what is to be told to a page, or waits until there is something.
    static ssize_t Read(void *of, uint64_t, char *to, size_t room)
    {
        auto *alive = static_cast<Alive *>(of);
        if (alive->hasLeft)
            return MHD_CONTENT_READER_END_WITH_ERROR;
        if (!std::exchange(alive->mustTell, false)) {
            MHD_suspend_connection(alive->connection);
            return 0;
        }
        return static_cast<ssize_t>(kComment.copy(to, room));
    }

    static void End(void *of)
    {
        auto *alive = static_cast<Alive *>(of);
        alive->server->End(alive);
    }
};

Server::Server(const Site &site, uint16_t port) : site_(site), listening_(Listen(port)), told_(Clock::now())
{
    if (listening_.Get() < 0)
        throw UsageError(fmt::format("--port {}: cannot be had, {}: give another, or leave it out", port,
                                     SystemText(errno)));
    const uint16_t used = PortOf(listening_.Get());
    host_ = used == kUnsaidPort ? "127.0.0.1" : fmt::format("127.0.0.1:{}", used);
    secret_ = fmt::format("/{}/", MakeSecret());
    address_ = fmt::format("http://{}{}?served", host_, secret_);
    daemon_ = MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, Library::Answer,
                               this, MHD_OPTION_LISTEN_SOCKET, listening_.Get(), MHD_OPTION_NOTIFY_CONNECTION,
                               Library::Notify, this, MHD_OPTION_CONNECTION_LIMIT, kMostConnections,
                               MHD_OPTION_CONNECTION_MEMORY_LIMIT, kMostHeader, MHD_OPTION_CONNECTION_TIMEOUT,
                               kToRead, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_END);
    if (daemon_ == nullptr)
        throw EarlyEnd(Status::InputFailed,
                       fmt::format("nothing can be served, {}: try again", SystemText(errno)));
}

Server::~Server()
{
    for (const Alive &alive : alive_)
        MHD_resume_connection(alive.connection); // else it could not be closed
    MHD_stop_daemon(daemon_);
}

void Server::AddSilent(int socket)
{
    const auto since = [](const auto &silent) { return silent.second; };
    if (silent_.size() >= kMostSilent) {
        const auto oldest = std::ranges::min_element(silent_, {}, since);
        (void)shutdown(oldest->first, SHUT_RDWR);
        silent_.erase(oldest);
    }
    silent_.insert_or_assign(socket, Clock::now());
}

void Server::TakeSilent(int socket)
{
    silent_.erase(socket);
}

int Server::Answer(MHD_Connection *connection, std::string_view path, std::string_view method)
{
    TakeSilent(SocketOf(connection));
    // A page from elsewhere whose name was made to mean this machine has that name here.
    const char *host = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
    if (host == nullptr || host != host_)
        return Refuse(connection, MHD_HTTP_FORBIDDEN);
    if (!BeginsWithSecret(path, secret_))
        return Refuse(connection, MHD_HTTP_NOT_FOUND);
    seen_ = Clock::now();
    if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD)
        return Refuse(connection, MHD_HTTP_METHOD_NOT_ALLOWED);
    path.remove_prefix(secret_.size());
    if (path == "alive" && method == MHD_HTTP_METHOD_GET)
        return AnswerAlive(connection);
    const Site::Page *page = site_.Find(path);
    if (page == nullptr)
        return Refuse(connection, MHD_HTTP_NOT_FOUND);
    return Send(connection, MHD_HTTP_OK, page->type, MakeResponse(page->bytes));
}

int Server::AnswerAlive(MHD_Connection *connection)
{
    hasPage_ = true;
    Alive &alive = alive_.emplace_back(Alive{this, connection, SocketOf(connection)});
    const Response response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kComment.size(),
                                                              Library::Read, &alive, Library::End),
                            MHD_destroy_response);
    if (response == nullptr)
        alive_.pop_back();
    return Send(connection, MHD_HTTP_OK, kEventStream, response);
}

void Server::End(Alive *alive)
{
    seen_ = Clock::now();
    alive_.remove_if([alive](const Alive &one) { return &one == alive; });
}

void Server::CloseSilent()
{
    const Clock::time_point latest = Clock::now() - kToAsk;
    std::erase_if(silent_, [latest](const auto &silent) {
        return silent.second <= latest && (shutdown(silent.first, SHUT_RDWR), true);
    });
}

void Server::TellAlive()
{
    if (Clock::now() < told_ + kBetweenTells)
        return;
    told_ = Clock::now();
    for (Alive &alive : alive_) {
        alive.mustTell = true;
        MHD_resume_connection(alive.connection);
    }
}

bool Server::Serve(Browser *browser, Messages *messages)
{
    const Clock::time_point begun = Clock::now();
    while (true) {
        if (hasPage_ && alive_.empty() && Clock::now() >= seen_ + kToReturn)
            return true;
        if (!hasPage_ && browser != nullptr && Clock::now() >= begun + kToCome)
            return false;
        CloseSilent();
        TellAlive();
        MHD_run(daemon_);
        Clock::time_point next = told_ + kBetweenTells;
        if (hasPage_ && alive_.empty())
            next = std::min(next, seen_ + kToReturn);
        for (const auto &[socket, since] : silent_)
            next = std::min(next, since + kToAsk);
        if (Wait(next, browser) && browser->HasFailed())
            messages->Note(fmt::format("no browser could be opened: open {} in one", address_));
    }
}

bool Server::Wait(Clock::time_point next, Browser *browser)
{
    using std::chrono::milliseconds;
    std::vector<pollfd> waited = {
        {MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd, POLLIN, 0}, {-1, POLLIN, 0}};
    if (browser != nullptr)
        waited[1].fd = browser->Handle();
    std::vector<Alive *> pages;
    for (Alive &alive : alive_) {
        pages.push_back(&alive);
        waited.push_back({alive.hasLeft ? -1 : alive.socket, POLLRDHUP, 0});
    }
    auto wait = std::chrono::ceil<milliseconds>(std::max(next - Clock::now(), Clock::duration(0)));
    MHD_UNSIGNED_LONG_LONG longest = 0;
    if (MHD_get_timeout(daemon_, &longest) == MHD_YES && longest < INT_MAX)
        wait = std::min(wait, milliseconds(longest));
    if (poll(waited.data(), waited.size(), static_cast<int>(wait.count())) <= 0)
        return false;
    for (size_t i = 0; i < pages.size(); ++i) {
        if (waited[i + 2].revents == 0)
            continue;
        pages[i]->hasLeft = true;
        MHD_resume_connection(pages[i]->connection);
    }
    return waited[1].revents != 0;
}

} // namespace vxhost
