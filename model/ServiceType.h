#pragma once

#include <QString>

#include <utility>

namespace tidewick
{

/// The coarse category of a listener. `database` and `cache` carry the product's display name;
/// equality compares it character for character. How a category looks is the view's business.
class ServiceType
{
public:
    enum class Kind { database, cache, webServer, container, unknown };

    ServiceType() = default;
    static ServiceType database(QString name) { return {Kind::database, std::move(name)}; }
    static ServiceType cache(QString name) { return {Kind::cache, std::move(name)}; }
    static ServiceType webServer() { return {Kind::webServer, {}}; }
    static ServiceType container() { return {Kind::container, {}}; }
    static ServiceType unknown() { return {}; }

    Kind kind() const { return m_kind; }
    /// The product's display name; empty for the kinds that have none.
    const QString &name() const { return m_name; }

    friend bool operator==(const ServiceType &, const ServiceType &) = default;

private:
    ServiceType(Kind kind, QString name) : m_kind(kind), m_name(std::move(name)) {}

    Kind m_kind = Kind::unknown;
    QString m_name;
};

} // namespace tidewick
