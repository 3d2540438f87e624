#include "platform/NSLog.h"

#include <fmt/args.h>
#include <fmt/printf.h>

#include <string>

#include "platform/Utf8.h"
#include "platform/backend/Backends.h"
#include "platform/backend/LogSink.h"

namespace platform {
namespace {

/// Returns the format as fmt's printf knows it, with `%s` for each `%@`.
std::string printfFormat(std::string_view format) {
    std::string text(format);
    for (auto at = text.find("%@"); at != std::string::npos; at = text.find("%@", at))
        text[at + 1] = 's';
    return text;
}

}  // namespace

void writeLogLine(std::string_view format, std::span<const LogValue> values) {
    LogSink* sink = backends().log;
    if (sink == nullptr)
        return;
    fmt::dynamic_format_arg_store<fmt::printf_context> arguments;
    for (const LogValue& value : values)
        std::visit([&](const auto& held) { arguments.push_back(held); }, value);
    std::string line = fmt::vsprintf(fmt::string_view(printfFormat(format)), arguments);
    while (line.ends_with('\n'))
        line.pop_back();
    sink->line(printableUtf8(line));
}

}  // namespace platform
