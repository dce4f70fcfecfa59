#pragma once

#include <QByteArray>

#include <map>
#include <optional>

namespace tidewick
{

/// What the requests of one probe have shown of TLS, by LoopbackUrl::address(). The probe owns it,
/// so that one method need not ask again what another has learnt, and the next probe starts anew.
class TlsEvidence
{
public:
    /// Nothing where the address has shown neither.
    std::optional<bool> speaksTls(const QByteArray &address) const
    {
        const auto found = m_speaksTls.find(address);
        return found == m_speaksTls.end() ? std::nullopt : std::optional(found->second);
    }

    void add(const QByteArray &address, bool speaksTls) { m_speaksTls[address] = speaksTls; }

private:
    std::map<QByteArray, bool> m_speaksTls;
};

} // namespace tidewick
