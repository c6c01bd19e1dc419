#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace varnlog::dao {

/// What is known of the server that a log lies on, for people.
struct ServerState {
  std::string version;
  std::string host;  // the one that answers, of several
  std::string database;
  std::string schema;
  std::string account;
  bool isOwner = false;                // the account can take the log's rules away
  std::string encryption;              // of the connection; "" for none
  std::string textOrder;               // version of the order of texts
  bool isStandby = false;              // follows another server and can only be read
  std::int64_t bytes = 0;              // of the log's tables and indexes
  std::vector<std::string> replicas;   // address and state of each server that follows this one
  std::vector<std::string> connected;  // account, program and address of each program in the database
};

}  // namespace varnlog::dao
