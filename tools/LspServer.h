#pragma once

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "toolkit/check/Check.h"
#include "tools/LspText.h"

namespace korvo::tools {

/// What an editor may choose, on the command line or in `initializationOptions`.
struct LspOptions {
  Language language = Language::english;
  Format format = Format::automatic;
};

/// A language server for definition files (Language Server Protocol 3.17): what the checker says of
/// the documents that an editor holds, hover texts and completion of keywords and names, fixes.
///
/// It reads no file but the geometry files that the documents name, and knows nothing of channels:
/// messages come in one by one, and go out by `send`.
class LspServer {
 public:
  using Send = std::function<void(const nlohmann::json& message)>;

  LspServer(LspOptions options, Send send);

  /// Takes a message, as its JSON text: answers a request, notes a notification.
  /// @errors  Answered as the protocol wants it. Never throws for what a client sends.
  void take(const std::string& message);

  bool isEnded() const { return state_ == State::ended; }  ///< "exit" came.
  bool wasShutDown() const { return wasShutDown_; }        ///< "shutdown" came.

 private:
  using json = nlohmann::json;
  using Answer = json (LspServer::*)(const json& params);
  using Note = void (LspServer::*)(const json& params);

  enum class State { fresh, running, shutDown, ended };

  struct Document {
    LspText text;
    std::vector<Diagnostic> diagnostics;
  };

  void takeRequest(const json& id, const std::string& method, const json& params);
  void takeNotification(const std::string& method, const json& params);
  json answerOf(const std::string& method, const json& params);

  json initialize(const json& params);
  json shutDown(const json& params);
  json hover(const json& params);
  json complete(const json& params);
  json fixes(const json& params);

  void open(const json& params);
  void change(const json& params);
  void close(const json& params);

  void check(const std::string& uri, std::string text, const json& version);
  void publish(const std::string& uri, const json& version, json diagnostics);
  const Document* find(const json& params) const;
  json diagnosticJson(const Document& document, const Diagnostic& diagnostic) const;

  void respond(const json& id, const char* member, json value);
  void notify(const char* method, json params);

  LspOptions options_;
  Send send_;
  State state_ = State::fresh;
  bool wasShutDown_ = false;
  std::map<std::string, Document> documents_;
};

}  // namespace korvo::tools
