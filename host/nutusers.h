#ifndef NUTUSERS_H
#define NUTUSERS_H

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

// Who may do what through the NUT server, read from a users file in the
// manner of upsd.users:
//
//   [monitor]
//       password = "secret"
//       upsmon primary          # or secondary
//   [operator]
//       password = other
//       instcmds = test.battery.start.quick beeper.toggle   # or ALL
//       actions = FSD
//
// Nothing is allowed by default: without the file, for an unknown user, a
// wrong or empty password, no command, no LOGIN, no PRIMARY and no FSD.
class NutUsers
{
public:
    // Files larger than this are not read at all.
    static constexpr qint64 MaxFileBytes = 256 * 1024;

    enum class Monitor { None, Secondary, Primary };

    struct User
    {
        QByteArray password;
        QStringList instcmds; // "ALL" allows every command
        Monitor monitor = Monitor::None;
        bool fsd = false;     // "actions = FSD" or upsmon primary
    };

    // Reads the file; a missing or unreadable file leaves no user. problems
    // receives one text per line that was not understood.
    bool load(const QString &path, QStringList *problems = nullptr);
    // Parses the file's contents.
    void parse(const QByteArray &text, QStringList *problems = nullptr);

    int count() const { return m_users.size(); }
    // The user when the name is known and the password matches it exactly.
    const User *authenticate(const QByteArray &name, const QByteArray &password) const;

    static bool mayLogin(const User *user) { return user && user->monitor != Monitor::None; }
    static bool mayBePrimary(const User *user) { return user && user->monitor == Monitor::Primary; }
    static bool maySetFsd(const User *user) { return user && (user->fsd || user->monitor == Monitor::Primary); }
    static bool mayRun(const User *user, const QString &command);

private:
    bool applySetting(User *user, const QByteArray &line);

    QMap<QByteArray, User> m_users;
};

#endif // NUTUSERS_H
