#include "db/dao/postgres/LibPq.h"

#include "db/dao/EngineError.h"

namespace varnlog::dao {

namespace {

constexpr platform::SystemLibrary kLibrary = {"libpq", 5};

template <typename Function>
Function* Find(const platform::SharedLibrary& library, const char* name) {
  if (auto* const function = library.Symbol<Function>(name)) return function;
  const std::string reason = library.Error().empty() ? std::string("it has no ") + name : library.Error();
  throw EngineError(ErrorNumber::kServerLibraryMissing,
                    std::string(kLibrary.name) + " cannot be used: " + reason);
}

}  // namespace

LibPq::LibPq(const platform::SharedLibrary& library)
    : backendPID(Find<decltype(::PQbackendPID)>(library, "PQbackendPID")),
      clear(Find<decltype(::PQclear)>(library, "PQclear")),
      cmdTuples(Find<decltype(::PQcmdTuples)>(library, "PQcmdTuples")),
      connectPoll(Find<decltype(::PQconnectPoll)>(library, "PQconnectPoll")),
      connectStartParams(Find<decltype(::PQconnectStartParams)>(library, "PQconnectStartParams")),
      connectionNeedsPassword(
          Find<decltype(::PQconnectionNeedsPassword)>(library, "PQconnectionNeedsPassword")),
      connectionUsedPassword(Find<decltype(::PQconnectionUsedPassword)>(library, "PQconnectionUsedPassword")),
      consumeInput(Find<decltype(::PQconsumeInput)>(library, "PQconsumeInput")),
      errorMessage(Find<decltype(::PQerrorMessage)>(library, "PQerrorMessage")),
      exec(Find<decltype(::PQexec)>(library, "PQexec")),
      finish(Find<decltype(::PQfinish)>(library, "PQfinish")),
      flush(Find<decltype(::PQflush)>(library, "PQflush")),
      fname(Find<decltype(::PQfname)>(library, "PQfname")),
      freemem(Find<decltype(::PQfreemem)>(library, "PQfreemem")),
      ftype(Find<decltype(::PQftype)>(library, "PQftype")),
      getCopyData(Find<decltype(::PQgetCopyData)>(library, "PQgetCopyData")),
      getResult(Find<decltype(::PQgetResult)>(library, "PQgetResult")),
      getisnull(Find<decltype(::PQgetisnull)>(library, "PQgetisnull")),
      getlength(Find<decltype(::PQgetlength)>(library, "PQgetlength")),
      getvalue(Find<decltype(::PQgetvalue)>(library, "PQgetvalue")),
      host(Find<decltype(::PQhost)>(library, "PQhost")),
      isBusy(Find<decltype(::PQisBusy)>(library, "PQisBusy")),
      nfields(Find<decltype(::PQnfields)>(library, "PQnfields")),
      notifies(Find<decltype(::PQnotifies)>(library, "PQnotifies")),
      ntuples(Find<decltype(::PQntuples)>(library, "PQntuples")),
      putCopyData(Find<decltype(::PQputCopyData)>(library, "PQputCopyData")),
      putCopyEnd(Find<decltype(::PQputCopyEnd)>(library, "PQputCopyEnd")),
      resultErrorField(Find<decltype(::PQresultErrorField)>(library, "PQresultErrorField")),
      resultStatus(Find<decltype(::PQresultStatus)>(library, "PQresultStatus")),
      sendPrepare(Find<decltype(::PQsendPrepare)>(library, "PQsendPrepare")),
      sendQuery(Find<decltype(::PQsendQuery)>(library, "PQsendQuery")),
      sendQueryParams(Find<decltype(::PQsendQueryParams)>(library, "PQsendQueryParams")),
      sendQueryPrepared(Find<decltype(::PQsendQueryPrepared)>(library, "PQsendQueryPrepared")),
      serverVersion(Find<decltype(::PQserverVersion)>(library, "PQserverVersion")),
      setErrorVerbosity(Find<decltype(::PQsetErrorVerbosity)>(library, "PQsetErrorVerbosity")),
      setNoticeProcessor(Find<decltype(::PQsetNoticeProcessor)>(library, "PQsetNoticeProcessor")),
      setnonblocking(Find<decltype(::PQsetnonblocking)>(library, "PQsetnonblocking")),
      socket(Find<decltype(::PQsocket)>(library, "PQsocket")),
      sslAttribute(Find<decltype(::PQsslAttribute)>(library, "PQsslAttribute")),
      sslInUse(Find<decltype(::PQsslInUse)>(library, "PQsslInUse")),
      status(Find<decltype(::PQstatus)>(library, "PQstatus")) {}

const LibPq& Pq() {
  // Never unloaded: what it has made may outlive any moment that could be chosen for it.
  static const platform::SharedLibrary kLoaded(kLibrary);
  static const LibPq kFunctions(kLoaded);
  return kFunctions;
}

}  // namespace varnlog::dao
