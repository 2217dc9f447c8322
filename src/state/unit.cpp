#include "state/unit.hpp"

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
#include "recordio/handler.hpp"
#include "recordio/read_error.hpp"
#include "state/host.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::Connection;
using recordio::ReadError;
using recordio::RestOfRecord;
using recordio::SystemError;

using Connections = std::map<integer, std::unique_ptr<Connection>>;

void close_at_exit();

/// All connected units. Never destroyed, because it is used at exit.
Connections& connections() {
  static auto* const all = [] {
    std::atexit(close_at_exit);
    return new Connections;
  }();
  return *all;
}

/// Flushes and closes open units in the order of their numbers. Failures are printed on standard
/// error and set the exit status.
void close_at_exit() {
  bool failed = false;
  for (auto& [number, connection] : connections()) {
    try {
      connection->close();
    } catch (const SystemError& error) {
      report_at_exit(message_of(error.operation, connection->path(), error.error));
      failed = true;
    }
  }
  connections().clear();
  if (!failed) return;
  std::fflush(nullptr);
  std::_Exit(status_of_fatal_errors);
}

/// Removes the connection from the table, even if closing it fails later.
std::unique_ptr<Connection> disconnect(integer number) {
  const auto node = connections().extract(number);
  return node ? std::move(node.mapped()) : nullptr;
}

Connection* connected(integer number) {
  const auto found = connections().find(number);
  return found == connections().end() ? nullptr : found->second.get();
}

/// Runs an action on a file whose failure is a fatal error.
template <class Action>
void on_file(const std::string& path, Action action) {
  try {
    action();
  } catch (const SystemError& error) {
    fail_run(message_of(error.operation, path, error.error));
  }
}

void close_unit(integer number) {
  const auto connection = disconnect(number);
  if (connection != nullptr) on_file(connection->path(), [&] { connection->close(); });
}

constinit Handler<std::string(std::string_view)> path_resolver;
constinit Handler<p3dgrid::StatedCoding(std::string_view)> coding_chooser;
bool whole_records = false;

/// Never destroyed, because hosts may ask for it at exit.
ReadFailure& last_failure() {
  static auto& failure = *new ReadFailure;
  return failure;
}

[[noreturn]] void fail_read(integer number, const Connection* connection, ReadError error) {
  const bool open = connection != nullptr;
  last_failure() = {.file = open ? connection->path() : std::string(),
                    .unit = number,
                    .status = error.status,
                    .record = open ? connection->record() : 0,
                    .offset = error.offset,
                    .line = open ? connection->line() : 0,
                    .found = std::move(error.found),
                    .expected = std::move(error.expected)};
  throw FailedRead();
}

}  // namespace

std::string path_of(const FileName& name) {
  return path_resolver ? host::call(path_resolver, name.view()) : std::string(name.view());
}

Unit::Unit(integer number, integer iformat) : number_(number) {
  if (iformat >= 0 && iformat <= 2) encoding_ = Encoding{iformat};
}

p3dgrid::Coding Unit::coding(const FileName& name, logical dblprec) const {
  using p3dgrid::Precision;
  p3dgrid::Coding coding{.encoding = encoding_.value_or(Encoding::formatted)};
  if (known() && coding_chooser) {
    p3dgrid::StatedCoding stated = host::call(coding_chooser, name.view());
    stated.encoding = coding.encoding;
    coding = p3dgrid::applied_to({}, stated);
  }
  coding.precision = dblprec ? Precision::double_precision : Precision::single_precision;
  return coding;
}

p3dgrid::Coding Unit::open(const FileName& name, OpenStatus status) const {
  const bool any_precision = false;
  if (!known()) return coding(name, any_precision);
  close();
  const std::string path = path_of(name);
  const p3dgrid::Coding its_coding = coding(name, any_precision);
  on_file(path,
          [&] { connections()[number_] = std::make_unique<Connection>(path, its_coding, status); });
  return its_coding;
}

template <class Action>
void Unit::read_with(Action action) const {
  if (!known()) return;
  Connection* const connection = connected(number_);
  if (connection == nullptr) fail("no file connected", "a file to read");
  try {
    action(*connection);
  } catch (ReadError& error) {
    fail_read(number_, connection, std::move(error));
  }
}

void Unit::read(const recordio::ReadList& list, RestOfRecord rest) const {
  if (whole_records) rest = RestOfRecord::refused;
  read_with([&](Connection& connection) { connection.read(list, rest); });
}

void Unit::expect_end() const {
  read_with([](Connection& connection) { connection.expect_end(); });
}

template <class Action>
void Unit::write_with(Action action) const {
  if (!known()) return;
  Connection* const connection = connected(number_);
  if (connection == nullptr) {
    fail_run("no file is connected to unit " + std::to_string(number_) + " to write to");
  }
  if (connection->is_input()) {
    fail_run("cannot write " + connection->path() + ": it is open for reading");
  }
  on_file(connection->path(), [&] { action(*connection); });
}

void Unit::write(const recordio::WriteList& list) const {
  write_with([&](Connection& connection) { connection.write(list); });
}

void Unit::write_text(const std::function<void(recordio::OutputFile&)>& write_lines) const {
  write_with([&](Connection& connection) { write_lines(connection.output()); });
}

void Unit::close() const {
  close_unit(number_);
}

std::string Unit::close_and_delete() const {
  const std::unique_ptr<Connection> connection = disconnect(number_);
  if (connection == nullptr) return {};
  const std::string& path = connection->path();
  if (::unlink(path.c_str()) == 0 || errno == ENOENT) return {};
  return "cannot delete " + path + ": " + std::generic_category().message(errno);
}

void Unit::require_room(std::int64_t values, recordio::FileKind kind, recordio::Claim claim,
                        const std::string& announced) const {
  read_with([&](const Connection& connection) {
    if (!connection.can_hold(values, kind, claim)) fail("a file far too short for that", announced);
  });
}

void Unit::fail(std::string found, std::string expected) const {
  const Connection* const connection = connected(number_);
  const std::int64_t offset = connection == nullptr ? 0 : connection->offset();
  fail_read(number_, connection,
            {recordio::status_error, offset, std::move(found), std::move(expected)});
}

void end_operation(const char* doing, const FileName& file) {
  try {
    try {
      throw;  // cppcheck-suppress rethrowNoCurrentException ; the caller handles one
    } catch (const FailedRead&) {
      host::dispfilereaderror();
    }
  } catch (const std::bad_alloc&) {
    host::pass_on_bad_alloc();
    std::string message = out_of_memory_message;
    try {
      message = std::string("cannot ") + doing + " " + path_of(file) + ": " + out_of_memory_message;
    } catch (const std::bad_alloc&) {
      host::threw_bad_alloc = false;
    }
    fail_without_memory(std::move(message));
  }
}

bool same_file(const FileName& one, const FileName& other) {
  struct stat first;
  struct stat second;
  return ::stat(path_of(one).c_str(), &first) == 0 &&
         ::stat(path_of(other).c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

bool file_exists(const FileName& name) {
  struct stat status;
  return ::lstat(path_of(name).c_str(), &status) == 0;
}

void p3dcloseunit(integer unit) try { close_unit(unit); } catch (const std::bad_alloc&) {
  fail_without_memory(out_of_memory_message);
}

const ReadFailure& p3dlastfailure() {
  return last_failure();
}

void p3dclearfailure() {
  last_failure() = {};
}

std::string ReadFailure::describe() const {
  std::string text = (file.empty() ? "unit " + std::to_string(unit) : file) + ": ";
  if (line > 0) {
    text += "line " + std::to_string(line);
  } else {
    text += "record " + std::to_string(record) + ", byte " + std::to_string(offset);
  }
  return p3dprintable(text + ": found " + found + ", expected " + expected);
}

void p3dsetpaths(std::function<std::string(std::string_view name)> resolver) {
  path_resolver.set(std::move(resolver));
}

void p3dsetcoding(std::function<p3dgrid::StatedCoding(std::string_view name)> chooser) {
  coding_chooser.set(std::move(chooser));
}

void p3dsetwholerecords(bool wanted) {
  whole_records = wanted;
}

}  // namespace mod_p3dgrid
