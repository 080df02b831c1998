#include "tools/LspServer.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "toolkit/check/Hover.h"
#include "tools/LspUri.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

// Numbers of the protocol.
constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;
constexpr int kInternalError = -32603;
constexpr int kNotInitialized = -32002;
constexpr int kFullText = 1;        // TextDocumentSyncKind
constexpr int kKeywordItem = 14;    // CompletionItemKind
constexpr int kReferenceItem = 18;  // CompletionItemKind
constexpr int kErrorMessage = 1;    // MessageType

// A request that gets an error for an answer.
struct Refusal : std::runtime_error {
  Refusal(int number, const std::string& message) : std::runtime_error(message), code(number) {}
  int code;
};

json errorJson(int code, const std::string& message) {
  return {{"code", code}, {"message", message}};
}

int severityOf(Severity severity) {
  switch (severity) {
    case Severity::error:
      return 1;
    case Severity::warning:
      return 2;
    case Severity::note:
      break;
  }
  return 3;
}

// --- what clients send

// From 0; what is too large for an int is beyond every document all the same.
int countOf(const json& number) {
  if (!number.is_number_integer()) throw Refusal(kInvalidParams, "expected a whole number");
  constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
  if (number.is_number_unsigned()) {
    return static_cast<int>(std::min(number.get<std::uint64_t>(), kMost));
  }
  return 0;
}

LspPosition positionOf(const json& position) {
  return {countOf(position.at("line")), countOf(position.at("character"))};
}

Language languageOf(const json& value) {
  if (value == "fr") return Language::french;
  if (value == "en") return Language::english;
  throw Refusal(kInvalidParams, "expected \"en\" or \"fr\" as language");
}

Format formatOf(const json& value) {
  if (value == 1) return Format::version1;
  if (value == 2) return Format::version2;
  if (value == "auto") return Format::automatic;
  throw Refusal(kInvalidParams, "expected 1, 2 or \"auto\" as format");
}

bool isResponse(const json& message) {
  return !message.contains("method") && (message.contains("result") || message.contains("error"));
}

bool isId(const json& id) { return id.is_string() || id.is_number_integer(); }

// What the method, the version and the id of a message are not; empty when it is one.
std::string faultOf(const json& message) {
  if (!message.is_object()) return "expected a JSON object";
  if (message.value("jsonrpc", json()) != "2.0") return "expected \"jsonrpc\": \"2.0\"";
  if (!message.value("method", json()).is_string()) return "expected a method";
  if (message.contains("id") && !isId(message["id"])) return "expected a number or a text as id";
  return "";
}

// --- what clients get

json positionJson(LspPosition position) {
  return {{"line", position.line}, {"character", position.character}};
}

json rangeJson(const LspText& text, std::size_t begin, std::size_t end) {
  return {{"start", positionJson(text.positionOf(begin))},
          {"end", positionJson(text.positionOf(end))}};
}

struct Range {
  std::size_t begin = 0;
  std::size_t end = 0;
};

Range rangeOf(const LspText& text, int line, int column, int length) {
  return {text.offsetOf(line, column), text.offsetOf(line, column + length)};
}

// A finding about a line marks all of it, one about the file the first line.
Range rangeOf(const LspText& text, const Diagnostic& d) {
  const int line = std::max(d.line, 1);
  if (d.line > 0 && d.column > 0) return rangeOf(text, line, d.column, d.length);
  return {text.offsetOf(line, 1), text.endOf(line)};
}

json rangeJson(const LspText& text, const Range& range) {
  return rangeJson(text, range.begin, range.end);
}

json completionJson(const LspText& text, const Range& replaced, const Completion& c) {
  json item = {{"label", c.word},
               {"kind", c.isKeyword ? kKeywordItem : kReferenceItem},
               {"textEdit", {{"range", rangeJson(text, replaced)}, {"newText", c.word}}}};
  if (!c.detail.empty()) item["detail"] = c.detail;
  if (!c.text.empty()) item["documentation"] = c.text;
  return item;
}

bool touches(const Range& a, const Range& b) { return a.begin <= b.end && b.begin <= a.end; }

// Whether a client that wants some kinds of actions only wants quick fixes: "" is every kind.
bool wantsFixes(const json& params) {
  const json context = params.value("context", json::object());
  if (!context.is_object() || !context.contains("only")) return true;
  const json& only = context["only"];
  return only.is_array() && std::any_of(only.begin(), only.end(), [](const json& kind) {
           return kind == "quickfix" || kind == "";
         });
}

const std::string& uriOf(const json& params) {
  return params.at("textDocument").at("uri").get_ref<const std::string&>();
}

}  // namespace

LspServer::LspServer(LspOptions options, Send send) : options_(options), send_(std::move(send)) {}

// --- messages

void LspServer::take(const std::string& message) {
  const json read = json::parse(message, nullptr, false);
  if (read.is_discarded())
    return respond(nullptr, "error", errorJson(kParseError, "expected JSON"));
  if (read.is_object() && isResponse(read)) return;  // to no question of ours
  const std::string fault = faultOf(read);
  if (!fault.empty()) {
    const json id = read.is_object() ? read.value("id", json()) : json();
    return respond(isId(id) ? id : json(), "error", errorJson(kInvalidRequest, fault));
  }
  const auto& method = read["method"].get_ref<const std::string&>();
  const json params = read.value("params", json::object());
  if (read.contains("id")) return takeRequest(read["id"], method, params);
  takeNotification(method, params);
}

void LspServer::takeRequest(const json& id, const std::string& method, const json& params) {
  json error;
  try {
    return respond(id, "result", answerOf(method, params));
  } catch (const Refusal& e) {
    error = errorJson(e.code, e.what());
  } catch (const json::exception&) {
    error = errorJson(kInvalidParams, "expected the parameters of " + method);
  } catch (const std::exception& e) {
    error = errorJson(kInternalError, e.what());
  }
  respond(id, "error", std::move(error));
}

json LspServer::answerOf(const std::string& method, const json& params) {
  static const std::pair<std::string_view, Answer> kAnswers[] = {
      {"shutdown", &LspServer::shutDown},
      {"textDocument/hover", &LspServer::hover},
      {"textDocument/completion", &LspServer::complete},
      {"textDocument/codeAction", &LspServer::fixes}};
  if (state_ == State::fresh && method == "initialize") return initialize(params);
  if (state_ == State::fresh) throw Refusal(kNotInitialized, "expected initialize first");
  if (state_ != State::running) throw Refusal(kInvalidRequest, "expected exit after shutdown");
  if (method == "initialize") throw Refusal(kInvalidRequest, "expected initialize once");
  for (const auto& [name, answer] : kAnswers) {
    if (name == method) return (this->*answer)(params);
  }
  throw Refusal(kMethodNotFound, "expected a method of korvo lsp, found " + method);
}

// What is unknown changes nothing. A notification has no answer: what went wrong is told apart.
void LspServer::takeNotification(const std::string& method, const json& params) {
  static const std::pair<std::string_view, Note> kNotes[] = {
      {"textDocument/didOpen", &LspServer::open},
      {"textDocument/didChange", &LspServer::change},
      {"textDocument/didClose", &LspServer::close}};
  if (method == "exit") state_ = State::ended;
  if (state_ != State::running) return;
  try {
    for (const auto& [name, note] : kNotes) {
      if (name == method) return (this->*note)(params);
    }
  } catch (const json::exception&) {
    const std::string text = "expected the parameters of " + method;
    notify("window/logMessage", {{"type", kErrorMessage}, {"message", text}});
  } catch (const std::exception& e) {
    notify("window/showMessage", {{"type", kErrorMessage}, {"message", e.what()}});
  }
}

void LspServer::respond(const json& id, const char* member, json value) {
  send_({{"jsonrpc", "2.0"}, {"id", id}, {member, std::move(value)}});
}

void LspServer::notify(const char* method, json params) {
  send_({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}});
}

// --- life

json LspServer::initialize(const json& params) {
  const json given = params.value("initializationOptions", json());
  if (given.is_object()) {
    if (given.contains("language")) options_.language = languageOf(given["language"]);
    if (given.contains("format")) options_.format = formatOf(given["format"]);
  }
  state_ = State::running;
  return {{"serverInfo", {{"name", "korvo"}, {"version", KORVO_VERSION}}},
          {"capabilities",
           {{"positionEncoding", "utf-16"},
            {"textDocumentSync", {{"openClose", true}, {"change", kFullText}}},
            {"hoverProvider", true},
            {"completionProvider", {{"triggerCharacters", json::array({"=", ","})}}},
            {"codeActionProvider", {{"codeActionKinds", json::array({"quickfix"})}}}}}};
}

json LspServer::shutDown(const json&) {
  state_ = State::shutDown;
  wasShutDown_ = true;
  return nullptr;
}

// --- documents

void LspServer::open(const json& params) {
  const json& document = params.at("textDocument");
  check(uriOf(params), document.at("text").get<std::string>(), document.value("version", json()));
}

// The last of the changes holds the whole text; one of a part was not asked for.
void LspServer::change(const json& params) {
  const json& changes = params.at("contentChanges");
  if (!documents_.contains(uriOf(params)) || !changes.is_array() || changes.empty()) return;
  const json& last = changes.back();
  if (last.contains("range")) return;
  check(uriOf(params), last.at("text").get<std::string>(),
        params.at("textDocument").value("version", json()));
}

void LspServer::close(const json& params) {
  if (documents_.erase(uriOf(params)) > 0) publish(uriOf(params), json(), json::array());
}

// Noted before it is checked: hover and completion need no findings.
void LspServer::check(const std::string& uri, std::string text, const json& version) {
  Document& document =
      documents_.insert_or_assign(uri, Document{LspText(std::move(text)), {}}).first->second;
  document.diagnostics =
      checkText(document.text.bytes(), pathOfUri(uri), options_.format, options_.language)
          .diagnostics;
  json found = json::array();
  for (const Diagnostic& d : document.diagnostics) found.push_back(diagnosticJson(document, d));
  publish(uri, version, std::move(found));
}

void LspServer::publish(const std::string& uri, const json& version, json diagnostics) {
  json params = {{"uri", uri}, {"diagnostics", std::move(diagnostics)}};
  if (version.is_number_integer()) params["version"] = version;
  notify("textDocument/publishDiagnostics", std::move(params));
}

const LspServer::Document* LspServer::find(const json& params) const {
  const auto at = documents_.find(uriOf(params));
  return at == documents_.end() ? nullptr : &at->second;
}

json LspServer::diagnosticJson(const Document& document, const Diagnostic& d) const {
  const char* between = options_.language == Language::french ? " ; " : "; ";
  return {{"range", rangeJson(document.text, rangeOf(document.text, d))},
          {"severity", severityOf(d.severity)},
          {"code", d.code},
          {"source", "korvo"},
          {"message", d.suggestion.empty() ? d.text : d.text + between + d.suggestion}};
}

// --- questions

json LspServer::hover(const json& params) {
  const LspPosition position = positionOf(params.at("position"));
  const Document* document = find(params);
  if (!document) return nullptr;
  const LspText& text = document->text;
  const auto found = hoverAt(text.bytes(), text.offsetOf(position), options_.language);
  if (!found) return nullptr;
  return {{"contents", {{"kind", "plaintext"}, {"value", found->text}}},
          {"range", rangeJson(text, found->begin, found->end)}};
}

json LspServer::complete(const json& params) {
  const LspPosition position = positionOf(params.at("position"));
  json items = json::array();
  const Document* document = find(params);
  if (!document) return items;
  const LspText& text = document->text;
  const std::size_t cursor = text.offsetOf(position);
  const Completions found = completionsAt(text.bytes(), cursor, options_.language);
  for (const Completion& c : found.words) {
    items.push_back(completionJson(text, {found.begin, cursor}, c));
  }
  return items;
}

json LspServer::fixes(const json& params) {
  const json& wanted = params.at("range");
  const LspPosition from = positionOf(wanted.at("start")), to = positionOf(wanted.at("end"));
  json actions = json::array();
  const Document* document = find(params);
  if (!document || !wantsFixes(params)) return actions;
  const LspText& text = document->text;
  const Range range{text.offsetOf(from), text.offsetOf(to)};
  for (const Diagnostic& d : document->diagnostics) {
    if (!d.fix || !touches(rangeOf(text, d), range)) continue;
    const Range gone = rangeOf(text, d.fix->line, d.fix->column, d.fix->length);
    const json edit = {{"range", rangeJson(text, gone)}, {"newText", d.fix->text}};
    actions.push_back({{"title", d.suggestion.empty() ? d.text : d.suggestion},
                       {"kind", "quickfix"},
                       {"diagnostics", json::array({diagnosticJson(*document, d)})},
                       {"isPreferred", true},
                       {"edit", {{"changes", {{uriOf(params), json::array({edit})}}}}}});
  }
  return actions;
}

}  // namespace korvo::tools
