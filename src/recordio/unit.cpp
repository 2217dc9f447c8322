#include "recordio/unit.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "mod_p3dgrid/run.hpp"
#include "recordio/read_error.hpp"
#include "state/host.hpp"
#include "state/read_failure.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace recordio {
namespace {

using Connections = std::map<integer, std::unique_ptr<Connection>>;

/// Flushes and closes what is still open when the run ends, in the order of the units. There is no
/// host left to ask: failures are told on standard error, and the last decides the status.
void close_all();

/// A failure of which standard error has been told.
struct Told {
  integer status;
};

/// What ends the run while it is ending. Made ahead of that, because memory may be what is missing.
const RunEndHandler& last_words() {
  static const auto& handler = *new const RunEndHandler(
      std::make_shared<std::function<void(const RunEnd&)>>([](const RunEnd& end) {
        std::fprintf(stderr, "mod_p3dgrid: %s\n", end.message.c_str());
        throw Told{end.status};
      }));
  return handler;
}

/// All connected units. Never destroyed, so that it is there whenever the run ends.
Connections& connections() {
  static Connections& all = []() -> Connections& {
    last_words();
    auto& table = *new Connections;
    std::atexit(close_all);
    return table;
  }();
  return all;
}

void close_all() {
  set_run_end_handler(last_words());
  integer status = 0;
  for (auto& [number, connection] : connections()) {
    try {
      connection->close();
    } catch (const Told& told) {
      status = told.status;
    }
  }
  connections().clear();
  if (status == 0) return;
  std::fflush(nullptr);
  std::_Exit(status);
}

/// Takes the connection off the table, so that it is gone even if closing it fails.
std::unique_ptr<Connection> disconnect(integer number) {
  const auto node = connections().extract(number);
  return node ? std::move(node.mapped()) : nullptr;
}

Connection* connected(integer number) {
  const auto found = connections().find(number);
  return found == connections().end() ? nullptr : found->second.get();
}

std::function<std::string(std::string_view)>& path_resolver() {
  static auto& resolver = *new std::function<std::string(std::string_view)>;
  return resolver;
}

std::function<std::endian(std::string_view)>& byte_order_chooser() {
  static auto& chooser = *new std::function<std::endian(std::string_view)>;
  return chooser;
}

std::endian byte_order_of(const FileName& name) {
  const auto chooser = byte_order_chooser();
  return chooser ? host::call(chooser, name.view()) : std::endian::native;
}

bool whole_records = false;

ReadFailure failure_at(integer number, const Connection& connection) {
  ReadFailure failure;
  failure.file = connection.path();
  failure.unit = number;
  failure.status = status_error;
  failure.record = connection.record();
  failure.offset = connection.offset();
  failure.line = connection.line();
  return failure;
}

}  // namespace

std::string path_of(const FileName& name) {
  // A copy, because the resolver may install another one.
  const auto resolver = path_resolver();
  return resolver ? host::call(resolver, name.view()) : std::string(name.view());
}

void Unit::open(const FileName& name, OpenStatus status) const {
  if (!known()) return;
  close();
  const std::string path = path_of(name);
  const std::endian order = byte_order_of(name);
  try {
    connections()[number_] = std::make_unique<Connection>(path, form_, status, order);
  } catch (const SystemError& failure) {
    fail_run(failure.operation, path, failure.error);
  }
}

/// Runs what reads from the connection; keeps the reason if that fails.
template <class Action>
bool Unit::attempt(Action action) const {
  if (!known()) return true;
  Connection* const connection = connected(number_);
  if (connection == nullptr) {
    fail("no file connected", "a file to read");
    return false;
  }
  try {
    action(*connection);
    return true;
  } catch (ReadError& error) {
    ReadFailure failure = failure_at(number_, *connection);
    failure.status = error.status;
    failure.offset = error.offset;
    failure.found = std::move(error.found);
    failure.expected = std::move(error.expected);
    set_last_failure(std::move(failure));
    return false;
  }
}

bool Unit::read(const ReadList& list) const {
  const RestOfRecord rest = whole_records ? RestOfRecord::refused : RestOfRecord::skipped;
  return attempt([&](Connection& connection) { connection.read(list, rest); });
}

bool Unit::read_whole(const ReadList& list) const {
  return attempt([&](Connection& connection) { connection.read(list, RestOfRecord::refused); });
}

bool Unit::expect_end() const {
  return attempt([](Connection& connection) { connection.expect_end(); });
}

Connection& Unit::connection_to_write() const {
  Connection* const connection = connected(number_);
  if (connection != nullptr) return *connection;
  fail_run("no file is connected to unit " + std::to_string(number_) + " to write to");
}

void Unit::write(const WriteList& list) const {
  if (known()) connection_to_write().write(list);
}

void Unit::write_line(std::string_view line) const {
  if (known()) connection_to_write().write_line(line);
}

void Unit::write_points(const WriteList& list, std::int64_t points) const {
  if (known()) connection_to_write().write_points(list, points);
}

void Unit::close() const {
  if (const auto connection = disconnect(number_)) connection->close();
}

std::string Unit::close_and_delete() const {
  const std::unique_ptr<Connection> connection = disconnect(number_);
  if (connection == nullptr) return {};
  const std::string& path = connection->path();
  if (::unlink(path.c_str()) == 0 || errno == ENOENT) return {};
  return "cannot delete " + path + ": " + std::generic_category().message(errno);
}

bool Unit::can_hold(std::int64_t values, FileKind kind, Claim claim,
                    const std::string& announced) const {
  bool enough = true;
  const bool told = attempt(
      [&](const Connection& connection) { enough = connection.can_hold(values, kind, claim); });
  if (!enough) fail("a file far too short for that", announced);
  return told && enough;
}

void Unit::fail(std::string found, std::string expected) const {
  const Connection* const connection = connected(number_);
  ReadFailure failure = connection == nullptr ? ReadFailure{} : failure_at(number_, *connection);
  failure.unit = number_;
  failure.status = status_error;
  failure.found = std::move(found);
  failure.expected = std::move(expected);
  set_last_failure(std::move(failure));
}

bool same_file(const FileName& one, const FileName& other) {
  struct stat first;
  struct stat second;
  return ::stat(path_of(one).c_str(), &first) == 0 &&
         ::stat(path_of(other).c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

void fail_without_memory(const char* doing, const FileName& file) {
  host::pass_on_bad_alloc();
  std::string message = out_of_memory_message;
  try {
    message = std::string("cannot ") + doing + " " + path_of(file) + ": " + out_of_memory_message;
  } catch (const std::bad_alloc&) {
    host::threw_bad_alloc = false;
  }
  mod_p3dgrid::fail_without_memory(std::move(message));
}

bool file_exists(const FileName& name) {
  struct stat status;
  return ::lstat(path_of(name).c_str(), &status) == 0;
}

}  // namespace recordio

void p3dcloseunit(integer unit) try {
  if (const auto connection = recordio::disconnect(unit)) connection->close();
} catch (const std::bad_alloc&) {
  fail_without_memory(out_of_memory_message);
}

void p3dsetpaths(std::function<std::string(std::string_view name)> resolver) {
  recordio::path_resolver() = std::move(resolver);
}

void p3dsetbyteorder(std::function<std::endian(std::string_view name)> chooser) {
  recordio::byte_order_chooser() = std::move(chooser);
}

void p3dsetwholerecords(bool wanted) {
  recordio::whole_records = wanted;
}

}  // namespace mod_p3dgrid
