#pragma once

#include "tests/support/ServerProgram.h"

#include <memory>

/// Real databases on `port` of 127.0.0.1, with their data in `directory`, which belongs to the user
/// that servers run as. Null where the program is missing or its data cannot be made; it may also
/// fail to come up, which ServerProgram::isUp() tells.
std::unique_ptr<ServerProgram> startRedis(const QString &directory, int port);
std::unique_ptr<ServerProgram> startMariadb(const QString &directory, int port);
std::unique_ptr<ServerProgram> startPostgres(const QString &directory, int port);
