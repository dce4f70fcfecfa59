// Every process of the session can call the menu that the status item exports.

#include "platform/tray/DBusMenu.h"
#include "tests/fuzz/Fuzz.h"

#include <QCoreApplication>

#include <array>

using namespace tidewick;

namespace
{

/// Takes the arguments of the calls from the input, and zeros after its end.
class Arguments
{
public:
    explicit Arguments(const QByteArray &input) : m_input(input) {}

    bool isAtEnd() const { return m_input.isEmpty(); }

    uint8_t byte()
    {
        const uint8_t value = isAtEnd() ? 0 : uint8_t(m_input[0]);
        m_input = m_input.mid(1);
        return value;
    }

    /// Often one of an entry, sometimes any.
    int id()
    {
        const uint8_t first = byte();
        if (first < 0xf0)
            return first % 7 - 1;
        return int(uint(byte()) << 24U | uint(byte()) << 16U | uint(byte()) << 8U | byte());
    }

    QString name()
    {
        constexpr std::array known{"label",   "enabled", "type",   "shortcut",
                                   "clicked", "hovered", "opened", "children-display"};
        const uint8_t first = byte();
        if (first < 0xc0)
            return QString::fromLatin1(known.at(first % known.size()));
        const QByteArray text = m_input.left(first - 0xc0);
        m_input = m_input.mid(text.size());
        return QString::fromUtf8(text);
    }

    template <typename Read>
    auto list(Read read)
    {
        QList<decltype(read())> result;
        for (int count = byte() % 8; count > 0; --count)
            result.append(read());
        return result;
    }

    QList<int> ids()
    {
        return list([this] { return id(); });
    }

    QStringList names()
    {
        return list([this] { return name(); });
    }

private:
    QByteArray m_input;
};

struct Menu
{
    Menu()
    {
        menu->setItems(
            {{QStringLiteral("First_Entry"), QString(),
              [this] {
                  ++chosen[1];
              }},
             {QStringLiteral("Off"), QStringLiteral(","), [this] { ++chosen[2]; }, false},
             {},
             {QStringLiteral("Last"), QStringLiteral("q"), [this] {
                  ++chosen[4];
              }}});
    }

    int count() const { return chosen[1] + chosen[2] + chosen[4]; }

    DBusObject object;
    DBusMenu *menu = new DBusMenu(&object); // the object's child
    std::array<int, 5> chosen{};
};

bool isEntry(int id)
{
    return id >= 0 && id <= 4;
}

void checkLayout(Menu &menu, Arguments &arguments)
{
    const int id = arguments.id();
    const int depth = arguments.id();
    DBusMenuLayout layout;
    menu.menu->GetLayout(id, depth, arguments.names(), layout);
    promise(layout.children.size() == (id == 0 && depth != 0 ? 4 : 0),
            "the root alone has children");
    promise(isEntry(id) || (layout.id == 0 && layout.properties.isEmpty()),
            "an unknown entry has no layout");
}

void checkProperties(Menu &menu, Arguments &arguments)
{
    const QList<int> ids = arguments.ids();
    const QStringList names = arguments.names();
    const auto entries = menu.menu->GetGroupProperties(ids, names);
    promise(entries.size() == std::count_if(ids.begin(), ids.end(), isEntry),
            "each known entry has its properties");
    for (const DBusMenuProperties &entry : entries) {
        for (auto it = entry.properties.begin(); it != entry.properties.end(); ++it)
            promise(names.isEmpty() || names.contains(it.key()), "only what was asked for");
    }
    promise(menu.menu->GetProperty(arguments.id(), arguments.name()).variant().isValid(),
            "a property has a value that the bus can carry");
}

/// The actions run once for each click among the events.
void checkClicks(Menu &menu, const QList<DBusMenuEvent> &events)
{
    int clicks = 0;
    for (const DBusMenuEvent &event : events)
        clicks += event.type == QStringLiteral("clicked") && (event.id == 1 || event.id == 4);
    const int before = menu.count();
    QCoreApplication::sendPostedEvents(menu.menu);
    promise(menu.count() - before == clicks, "a click on an entry runs its action once");
    promise(menu.chosen[2] == 0, "an entry that is off does nothing");
}

void checkEvents(Menu &menu, Arguments &arguments)
{
    const auto events = arguments.list([&arguments] {
        return DBusMenuEvent{arguments.id(), arguments.name(), QDBusVariant(arguments.name()),
                             arguments.byte()};
    });
    const QList<int> unknown = menu.menu->EventGroup(events);
    promise(std::none_of(unknown.begin(), unknown.end(), isEntry), "what is known is not unknown");
    checkClicks(menu, events);
    for (const DBusMenuEvent &event : events)
        menu.menu->Event(event.id, event.type, event.data, event.timestamp);
    checkClicks(menu, events);
}

void checkShowing(Menu &menu, Arguments &arguments)
{
    QList<int> unknown;
    const QList<int> ids = arguments.ids();
    promise(menu.menu->AboutToShowGroup(ids, unknown).isEmpty(), "nothing has changed");
    promise(unknown.size() == ids.size() - std::count_if(ids.begin(), ids.end(), isEntry),
            "what is not known is unknown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    Arguments arguments(bytesOf(data, size));
    Menu menu;
    while (!arguments.isAtEnd()) {
        switch (arguments.byte() % 4) {
        case 0:
            checkLayout(menu, arguments);
            break;
        case 1:
            checkProperties(menu, arguments);
            break;
        case 2:
            checkEvents(menu, arguments);
            break;
        default:
            checkShowing(menu, arguments);
            break;
        }
    }
    return 0;
}
