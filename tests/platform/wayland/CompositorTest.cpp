#include "platform/wayland/Compositor.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <wayland-server.h>

using namespace std::chrono_literals;
using tidewick::compositorOffers;
using tidewick::outputPixels;

namespace
{

const wl_interface someGlobal{"tidewick_test_global", 1, 0, nullptr, 0, nullptr};

/// How an output of 1920x1200 pixels stands.
struct Turned
{
    const char *name;
    wl_output_transform transform;
};

Turned upright{"upright", WL_OUTPUT_TRANSFORM_90};
Turned upsideDown{"upside down", WL_OUTPUT_TRANSFORM_180};

void tellOfOutput(wl_client *client, void *data, uint32_t version, uint32_t number)
{
    const auto &turned = *static_cast<const Turned *>(data);
    wl_resource *const output =
        wl_resource_create(client, &wl_output_interface, static_cast<int>(version), number);
    wl_output_send_geometry(output, 0, 0, 0, 0, 0, "", "", turned.transform);
    wl_output_send_mode(output, 0, 640, 480, 0);
    wl_output_send_mode(output, WL_OUTPUT_MODE_CURRENT, 1920, 1200, 0);
    wl_output_send_name(output, turned.name);
    wl_output_send_done(output);
}

/// A compositor in a thread of its own, which offers one interface beside two outputs.
class TestCompositor
{
public:
    explicit TestCompositor(const char *socket)
        : m_display(wl_display_create(), &wl_display_destroy)
    {
        wl_global_create(m_display.get(), &someGlobal, 1, nullptr, [](auto...) {});
        for (Turned *const output : {&upright, &upsideDown})
            wl_global_create(m_display.get(), &wl_output_interface, 4, output, tellOfOutput);
        EXPECT_EQ(wl_display_add_socket(m_display.get(), socket), 0);
        m_thread = std::thread([this] {
            while (!m_isEnding) {
                wl_event_loop_dispatch(wl_display_get_event_loop(m_display.get()), 10);
                wl_display_flush_clients(m_display.get());
            }
        });
    }
    ~TestCompositor()
    {
        m_isEnding = true;
        m_thread.join();
        wl_display_destroy_clients(m_display.get());
    }
    Q_DISABLE_COPY_MOVE(TestCompositor)

private:
    std::unique_ptr<wl_display, decltype(&wl_display_destroy)> m_display;
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};

class CompositorTest : public testing::Test
{
protected:
    CompositorTest()
    {
        qputenv("XDG_RUNTIME_DIR", m_directory.path().toLocal8Bit());
        qputenv("WAYLAND_DISPLAY", socket);
        qunsetenv("WAYLAND_SOCKET");
    }
    ~CompositorTest() override
    {
        qunsetenv("WAYLAND_DISPLAY");
        qunsetenv("WAYLAND_SOCKET");
    }

    static constexpr const char *socket = "wayland-test";
    QTemporaryDir m_directory;
};

} // namespace

TEST_F(CompositorTest, offersWhatItTells)
{
    const TestCompositor compositor(socket);
    EXPECT_TRUE(compositorOffers("tidewick_test_global", 5s));
    EXPECT_FALSE(compositorOffers("tidewick_test", 5s));
    EXPECT_FALSE(compositorOffers("zwlr_layer_shell_v1", 5s));
}

TEST_F(CompositorTest, tellsThePixelsOfItsOutputsAsTheyStand)
{
    const TestCompositor compositor(socket);
    const QHash<QString, QSize> expected{{QStringLiteral("upright"), QSize(1200, 1920)},
                                         {QStringLiteral("upside down"), QSize(1920, 1200)}};
    EXPECT_EQ(outputPixels(5s), expected);
}

TEST_F(CompositorTest, offersNothingWhereThereIsNone)
{
    EXPECT_FALSE(compositorOffers("tidewick_test_global", 5s));
    EXPECT_TRUE(outputPixels(5s).isEmpty());
}

TEST_F(CompositorTest, connectionForTheToolkitIsLeftAlone)
{
    const TestCompositor compositor(socket);
    qputenv("WAYLAND_SOCKET", "7");
    EXPECT_FALSE(compositorOffers("tidewick_test_global", 5s));
    EXPECT_EQ(qgetenv("WAYLAND_SOCKET"), "7");
}

TEST_F(CompositorTest, silentOneIsNotAwaitedForLong)
{
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const QByteArray path = m_directory.filePath(QLatin1String(socket)).toLocal8Bit();
    ASSERT_LT(path.size(), qsizetype{sizeof(address.sun_path)});
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(compositorOffers("tidewick_test_global", 200ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 190ms);
    close(listener);
}
