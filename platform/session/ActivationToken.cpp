#include "platform/session/ActivationToken.h"

#include "platform/x11/StartupNotification.h"

#include <utility>

namespace tidewick
{
namespace
{

constexpr const char *variable = "XDG_ACTIVATION_TOKEN"; // where the toolkit looks for it

} // namespace

ActivationToken::ActivationToken(QByteArray token) : m_token(std::move(token))
{
    if (!m_token.isEmpty())
        qputenv(variable, m_token);
}

ActivationToken::~ActivationToken()
{
    qunsetenv(variable);
    endStartup(m_token);
}

} // namespace tidewick
