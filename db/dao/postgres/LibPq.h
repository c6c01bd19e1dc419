#pragma once

#include <libpq-fe.h>

#include "platform/SharedLibrary.h"

namespace varnlog::dao {

/// The functions of the server's client library, under their names without "PQ". It is loaded when a log on a
/// server is opened for the first time: with all that it brings it would cost every start of the program, and
/// who has a file needs none of it.
struct LibPq {
  explicit LibPq(const platform::SharedLibrary& library);

  decltype(&::PQbackendPID) backendPID;
  decltype(&::PQclear) clear;
  decltype(&::PQcmdTuples) cmdTuples;
  decltype(&::PQconnectPoll) connectPoll;
  decltype(&::PQconnectStartParams) connectStartParams;
  decltype(&::PQconnectionNeedsPassword) connectionNeedsPassword;
  decltype(&::PQconnectionUsedPassword) connectionUsedPassword;
  decltype(&::PQconsumeInput) consumeInput;
  decltype(&::PQerrorMessage) errorMessage;
  decltype(&::PQexec) exec;
  decltype(&::PQfinish) finish;
  decltype(&::PQflush) flush;
  decltype(&::PQfname) fname;
  decltype(&::PQfreemem) freemem;
  decltype(&::PQftype) ftype;
  decltype(&::PQgetCopyData) getCopyData;
  decltype(&::PQgetResult) getResult;
  decltype(&::PQgetisnull) getisnull;
  decltype(&::PQgetlength) getlength;
  decltype(&::PQgetvalue) getvalue;
  decltype(&::PQhost) host;
  decltype(&::PQisBusy) isBusy;
  decltype(&::PQnfields) nfields;
  decltype(&::PQnotifies) notifies;
  decltype(&::PQntuples) ntuples;
  decltype(&::PQputCopyData) putCopyData;
  decltype(&::PQputCopyEnd) putCopyEnd;
  decltype(&::PQresultErrorField) resultErrorField;
  decltype(&::PQresultStatus) resultStatus;
  decltype(&::PQsendPrepare) sendPrepare;
  decltype(&::PQsendQuery) sendQuery;
  decltype(&::PQsendQueryParams) sendQueryParams;
  decltype(&::PQsendQueryPrepared) sendQueryPrepared;
  decltype(&::PQserverVersion) serverVersion;
  decltype(&::PQsetErrorVerbosity) setErrorVerbosity;
  decltype(&::PQsetNoticeProcessor) setNoticeProcessor;
  decltype(&::PQsetnonblocking) setnonblocking;
  decltype(&::PQsocket) socket;
  decltype(&::PQsslAttribute) sslAttribute;
  decltype(&::PQsslInUse) sslInUse;
  decltype(&::PQstatus) status;
};

/// Throws kServerLibraryMissing, saying why, where the library is not installed.
[[nodiscard]] const LibPq& Pq();

}  // namespace varnlog::dao
