#pragma once

#include <QByteArray>

namespace tidewick
{

/// While it lives, the toolkit finds the desktop's proof that the user asked for a window. At its
/// end the request counts as answered, so the desktop shows no busy pointer any longer.
class ActivationToken
{
public:
    /// `token` may be empty: then nothing proves the request.
    explicit ActivationToken(QByteArray token);
    ~ActivationToken();
    Q_DISABLE_COPY_MOVE(ActivationToken)

private:
    QByteArray m_token;
};

} // namespace tidewick
