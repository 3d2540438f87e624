#include "tests/support/Exchanges.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <deque>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/CameraBench.h"

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what);
}

template <class Value = std::string>
Value next(std::istream& in) {
    Value value{};
    if (!(in >> value))
        fail("a word is missing or no number");
    return value;
}

std::string restOf(std::istream& in) {
    std::string text;
    std::getline(in >> std::ws, text);
    return text;
}

bool isAtEnd(std::istream& in) {
    return (in >> std::ws).eof();
}

/// Takes a control as "unit/selector".
virtualcam::ControlId nextControl(std::istream& in) {
    const int unit = next<int>(in);
    if (next<char>(in) != '/')
        fail("a control is unit/selector");
    return {static_cast<std::uint8_t>(unit), static_cast<std::uint8_t>(next<int>(in))};
}

/// Takes the first of `came`, which must be as `wanted` says; " ..." at its end leaves it open.
void expectNext(std::deque<std::string>& came, const std::string& wanted) {
    if (came.empty())
        fail("nothing more came");
    const std::string first = came.front();
    came.pop_front();
    const bool isOpen = wanted.ends_with("...");
    if (isOpen ? !first.starts_with(wanted.substr(0, wanted.size() - 3)) : first != wanted)
        fail("but this came: " + first);
}

/// The lowest and the highest number that a slider or a list offers, with all between them.
std::string offerOf(WindowHands& hands, const std::string& name) {
    if (const auto* slider = qobject_cast<QSlider*>(hands.find<QWidget>(name)))
        return std::to_string(slider->minimum()) + ' ' + std::to_string(slider->maximum()) +
               (slider->tickInterval() == 1 ? "" : " without a tick mark each");
    const QComboBox& list = hands.list(name);
    for (int i = 1; i < list.count(); ++i)
        if (list.itemText(i).toInt() != list.itemText(i - 1).toInt() - 1)
            return "numbers that do not descend";
    return (list.itemText(list.count() - 1) + ' ' + list.itemText(0)).toStdString();
}

class Performance {
  public:
    explicit Performance(const Stage& stage) : stage_(stage) {}

    void perform(const std::string& statement) {
        std::istringstream in(statement);
        const auto word = next(in);
        if (word == ">") {
            expectNext(requests_, restOf(in));
        } else if (word == "log") {
            expectNext(log_, restOf(in));
        } else if (word == "skip") {
            for (int count = next<int>(in); count > 0; --count)
                expectNext(requests_, "...");
        } else if (word == "forget") {
            requests_.clear();
            log_.clear();
        } else if (word == "answer") {
            const auto button = next(in);
            if (button != "OK" && button != "Cancel")
                fail("no such answer");
            answer_ = button == "OK" ? QMessageBox::AcceptRole : QMessageBox::RejectRole;
            question_ = restOf(in);
        } else if (word == "meanwhile") {
            meanwhile_ = restOf(in);
        } else if (word == "stall") {
            virtualcam::Faults faults;
            while (!isAtEnd(in))
                faults.stalled.insert(nextControl(in));
            stage_.camera.setFaults(faults);
        } else if (word.starts_with("m_")) {
            if (const std::string found = difference(statement); !found.empty())
                fail(found);
            restOf(in);
        } else {
            act(word, in);
        }
        if (!isAtEnd(in))
            fail("too many words");
    }

    void expectNothingMore() const {
        for (const auto* left : {&requests_, &log_})
            if (!left->empty())
                fail("nobody expected: " + left->front());
    }

  private:
    /// Does something, once all that came of what was done before has been expected.
    void act(const std::string& word, std::istream& in) {
        expectNothingMore();
        const NextBox box(std::exchange(answer_, QMessageBox::RejectRole));
        std::set<std::string> seen;
        if (!meanwhile_.empty()) {
            stage_.camera.setFaults({.delay = std::chrono::milliseconds(1)});
            stage_.camera.setWait([&](auto) { seen.insert(difference(meanwhile_)); });
        }
        work(word, in);
        QCoreApplication::processEvents();
        if (!meanwhile_.empty())
            stage_.camera.setFaults({});
        collect(word == "load");
        if (box.said() != std::exchange(question_, {}))
            fail("the box said: " + box.said());
        if (!std::exchange(meanwhile_, {}).empty() && seen != std::set<std::string>{{}})
            fail("while requests were on their way: " + (seen.empty() ? "none" : *seen.rbegin()));
    }

    void work(const std::string& word, std::istream& in) {
        if (word == "load") {
            stage_.loadPages();
        } else if (word == "set") {
            const auto control = nextControl(in);
            std::vector<std::uint8_t> bytes;
            while (!isAtEnd(in))
                bytes.push_back(static_cast<std::uint8_t>(std::stoul(next(in), nullptr, 16)));
            setInCamera(stage_.camera, control, std::move(bytes));
        } else if (word == "click") {
            stage_.hands.click(next(in));
        } else if (word == "choose") {
            const auto list = next(in);
            stage_.hands.choose(list, next(in));
        } else if (word == "move") {
            const auto slider = next(in);
            stage_.hands.moveSlider(slider, next<int>(in));
        } else if (word == "maximum") {
            QSlider& slider = stage_.hands.slider(next(in));
            slider.setMaximum(next<int>(in));
        } else {
            fail("no such word");
        }
    }

    /// Takes in what has reached the camera and the log. What a load reads and traces is left out.
    void collect(bool loaded) {
        static const std::regex traces("(g_length|bmRequestType2|intval:|set:length:|viewLayer).*");
        for (const auto& record : stage_.camera.requests())
            if (!stage_.isForeign(record) && (!loaded || record.bRequest == virtualcam::SET_CUR))
                requests_.push_back(wireText(record));
        stage_.camera.clearRequests();
        for (const std::string& line : stage_.log.take(loaded ? "CameraControl" : ""))
            if (!std::regex_match(line, traces))
                log_.push_back(line);
    }

    /// How a widget differs from what the statement says of it; empty when none does.
    std::string difference(const std::string& statement) {
        std::istringstream in(statement);
        std::vector<std::string> names;
        auto verb = next(in);
        for (; verb.starts_with("m_"); verb = next(in))
            names.push_back(verb);
        const std::string wanted = restOf(in);
        for (const std::string& name : names)
            if (const std::string seen = see(name, verb); seen != wanted)
                return std::string("but ").append(name).append(" " + verb + " ").append(seen);
        return {};
    }

    std::string see(const std::string& name, const std::string& verb) {
        if (verb == "=")
            return stage_.hands.shown(name);
        if (verb == "is")
            return stage_.hands.isEnabled(name) ? "enabled" : "disabled";
        if (verb == "pictures")
            return stage_.hands.image(name);
        if (verb == "offers")
            return offerOf(stage_.hands, name);
        fail("no such word: " + verb);
    }

    const Stage& stage_;
    QMessageBox::ButtonRole answer_ = QMessageBox::RejectRole;
    std::string question_;   // what the next box is to say
    std::string meanwhile_;  // what the widgets are to show during the next requests
    std::deque<std::string> requests_;
    std::deque<std::string> log_;
};

}  // namespace

void PrintTo(const Exchange& exchange, std::ostream* out) {
    *out << exchange.file << ':' << exchange.line;
}

std::vector<Exchange> readExchanges(std::initializer_list<const char*> files,
                                    const std::string& stage) {
    static const std::regex parts("(?:(direct|kernel): *)?(== )?(.*?) *");
    std::vector<Exchange> blocks;
    for (const char* name : files) {
        const std::string path = std::string(QUELVO_EXCHANGES) + name;
        std::ifstream file(path);
        std::string text;
        bool takesBlock = false;
        for (int line = 1; std::getline(file, text); ++line) {
            std::istringstream statements(text.substr(0, text.find('#')));
            while (std::getline(statements >> std::ws, text, ';')) {
                std::smatch part;
                std::regex_match(text, part, parts);
                const bool taken = !part[1].matched || part[1] == stage;
                if (part[2].matched)
                    takesBlock = taken;
                if (part[2].matched && taken)
                    blocks.push_back({path, line, part[3], {}});
                else if (takesBlock && taken)
                    blocks.back().statements.push_back({line, part[3]});
            }
        }
        if (blocks.empty() || blocks.back().file != path)
            fail("no exchanges in " + path);
    }
    return blocks;
}

void perform(const Exchange& exchange, const Stage& stage) {
    Performance performance(stage);
    Exchange::Statement current{exchange.line, ""};
    try {
        for (const Exchange::Statement& statement : exchange.statements) {
            current = statement;
            performance.perform(statement.text);
        }
        performance.expectNothingMore();
    } catch (const std::exception& error) {
        ADD_FAILURE_AT(exchange.file.c_str(), current.line) << current.text << ": " << error.what();
    }
    stage.camera.setFaults({});
}
