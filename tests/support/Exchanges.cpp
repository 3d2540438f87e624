#include "tests/support/Exchanges.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QToolButton>
#include <deque>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "camera/OpenCamera.h"
#include "camera/Transfer.h"
#include "camera/UVCCameraControl.h"
#include "tests/support/CameraFixture.h"

namespace {

/// Takes the first of `came`, which must be as `wanted` says; "..." at its end leaves it open.
void expectNext(std::deque<std::string>& came, const std::string& wanted) {
    if (came.empty())
        throw std::runtime_error("nothing more came");
    const std::string first = came.front();
    came.pop_front();
    const auto known = wanted.ends_with("...") ? wanted.size() - 3 : std::string::npos;
    if (first.substr(0, known) != wanted.substr(0, known))
        throw std::runtime_error("but this came: " + first);
}

/// Reads controls as "unit/selector".
std::set<virtualcam::ControlId> controlsIn(const std::string& text) {
    std::istringstream in(text);
    std::set<virtualcam::ControlId> controls;
    for (int unit = 0, selector = 0; in >> unit && in.ignore() >> selector;)
        controls.insert({static_cast<std::uint8_t>(unit), static_cast<std::uint8_t>(selector)});
    return controls;
}

/// The lowest and the highest number that a slider or a list offers, with all between them.
std::string offerOf(WindowHands& hands, const std::string& name) {
    if (const auto* slider = qobject_cast<QSlider*>(hands.find<QWidget>(name)))
        return std::to_string(slider->minimum()) + ' ' + std::to_string(slider->maximum()) +
               (slider->tickPosition() == QSlider::TicksBelow && slider->tickInterval() == 1
                    ? ""
                    : " without a tick mark each");
    const QComboBox& list = hands.list(name);
    for (int i = 1; i < list.count(); ++i)
        if (list.itemText(i).toInt() != list.itemText(i - 1).toInt() - 1)
            return "numbers that do not descend";
    return (list.itemText(list.count() - 1) + ' ' + list.itemText(0)).toStdString();
}

std::string see(WindowHands& hands, const std::string& name, const std::string& verb) {
    if (verb == "=")
        return hands.shown(name);
    if (verb == "is")
        return hands.isEnabled(name) ? "enabled" : "disabled";
    if (verb == "pictures")
        return hands.image(name);
    if (verb == "has")
        return hands.find<QToolButton>(name)->autoRaise() ? "no border" : "a border";
    return offerOf(hands, name);
}

/// How widgets differ from what the expectation says of them; empty when none does.
std::string difference(WindowHands& hands, const std::string& expectation) {
    static const std::regex form("((?:m_\\w+ )+)(=|is|pictures|has|offers) (.*)");
    std::smatch part;
    if (!std::regex_match(expectation, part, form))
        throw std::runtime_error("no such expectation");
    std::istringstream names(part[1]);
    for (std::string name; names >> name;)
        if (const std::string seen = see(hands, name, part[2]); seen != part[3])
            return std::string("but ").append(name).append(" shows ").append(seen);
    return {};
}

class Performance {
  public:
    explicit Performance(const Stage& stage) : stage_(stage) {}

    void perform(const std::string& statement) {
        statement_ = statement;
        if (is("> (.*)")) {
            expectNext(requests_, part_[1]);
        } else if (is("log (.*)")) {
            expectNext(log_, part_[1]);
        } else if (is("traced (.*)")) {
            if (!traces_.contains(part_[1]))
                throw std::runtime_error("nothing traced that");
        } else if (is("skip (\\d+)")) {
            for (int count = std::stoi(part_[1]); count > 0; --count)
                expectNext(requests_, "...");
        } else if (is("forget")) {
            requests_.clear();
            log_.clear();
        } else if (is("answer (?:OK|(Cancel)) (.*)")) {
            answer_ = part_[1].matched ? QMessageBox::RejectRole : QMessageBox::AcceptRole;
            question_ = part_[2];
        } else if (is("meanwhile (.*)")) {
            unseen_.insert(part_[1]);
            stage_.camera.setFaults({.delay = std::chrono::milliseconds(1)});
            stage_.camera.setWait([this, wanted = part_.str(1)](auto) {
                unseen_.erase(wanted);
                log_.push_back(difference(stage_.hands, wanted));
            });
        } else if (is("stall((?: \\d+/\\d+)*)")) {
            stage_.camera.setFaults({.stalled = controlsIn(part_[1])});
        } else if (is("mend")) {
            stage_.camera.setFaults({});
        } else if (is("(length|short) (\\d+/\\d+) (\\d+)|fail (\\w+) (\\d+)")) {
            virtualcam::Faults faults = stage_.camera.faults();
            plant(faults);
            stage_.camera.setFaults(faults);
        } else if (is("m_.*")) {
            if (const std::string found = difference(stage_.hands, statement_); !found.empty())
                throw std::runtime_error(found);
        } else if (!doDeed()) {
            throw std::runtime_error("no such statement");
        }
    }

    void expectNothingMore() const {
        for (const auto* left : {&requests_, &log_})
            if (!left->empty())
                throw std::runtime_error("nobody expected: " + left->front());
    }

    void end() const {
        expectNothingMore();
        if (!unseen_.empty())
            throw std::runtime_error("nobody looked meanwhile: " + *unseen_.begin());
    }

  private:
    /// Whether the statement has this form, whose parts are then known.
    bool is(const std::string& form) {
        static std::map<std::string, std::regex> forms;
        return std::regex_match(statement_, part_, forms.try_emplace(form, form).first->second);
    }

    /// Does what the statement says, if it says what to do, by the window or past it.
    bool doDeed() {
        WindowHands& hands = stage_.hands;
        if (is("set (\\d+/\\d+) ([ 0-9a-f]+)")) {
            const QByteArray bytes = QByteArray::fromHex(part_.str(2).c_str());
            expectNothingMore();
            setInCamera(stage_.camera, *controlsIn(part_[1]).begin(), {bytes.begin(), bytes.end()});
        } else if (is("open (.+) = (\\d)")) {
            act([&] {
                if (OpenCameraByUniqueID(part_.str(1)) != std::stoi(part_[2]))
                    throw std::runtime_error("it came to another end");
            });
        } else if (is("(read|write) (-?\\d)/(\\d+) ([0-9a-f]+)(?: = ([0-9a-f]+)| (fails))?")) {
            act([&] { transfer(); });
        } else if (is("load")) {
            act(stage_.loadPages);
        } else if (is("click (\\S+)")) {
            act([&] { hands.click(part_[1]); });
        } else if (is("choose (\\S+) (\\S+)")) {
            act([&] { hands.choose(part_[1], part_[2]); });
        } else if (is("move (\\S+) (-?\\d+)")) {
            act([&] { hands.moveSlider(part_[1], std::stoi(part_[2])); });
        } else if (is("untick (\\S+)")) {
            hands.slider(part_[1]).setTickPosition(QSlider::NoTicks);
        } else if (is("maximum (\\S+) (-?\\d+)")) {
            act([&] { hands.slider(part_[1]).setMaximum(std::stoi(part_[2])); });
        } else {
            return false;
        }
        return true;
    }

    /// Breaks one thing of the camera, as the statement says.
    void plant(virtualcam::Faults& faults) {
        using virtualcam::Faults;
        static const std::map<std::string, IOReturn Faults::*> steps{
            {"deviceCreatePlugIn", &Faults::deviceCreatePlugIn},
            {"deviceQueryInterface", &Faults::deviceQueryInterface},
            {"deviceInterfaces", &Faults::deviceInterfaces},
            {"interfaceCreatePlugIn", &Faults::interfaceCreatePlugIn},
            {"interfaceQueryInterface", &Faults::interfaceQueryInterface},
            {"interfaceOpen", &Faults::interfaceOpen}};
        if (part_[1].matched)
            (part_[1] == "length" ? faults.lengths
                                  : faults.shortReads)[*controlsIn(part_[2]).begin()] =
                static_cast<std::uint16_t>(std::stoi(part_[3]));
        else if (part_[4] == "noVideoControl")
            faults.noVideoControl = true;
        else if (part_[4] == "delay")
            faults.delay = std::chrono::milliseconds(std::stoi(part_[5]));
        else
            faults.*steps.at(part_[4]) = std::stoi(part_[5]);
        stage_.camera.setWait([](auto) {});
    }

    /// Transfers what the statement says. Behind the room for it the sanitizer watches.
    void transfer() {
        const QByteArray given = QByteArray::fromHex(part_.str(4).c_str());
        std::vector<std::uint8_t> room(given.begin(), given.end());
        const auto kind = static_cast<std::uint32_t>(std::stoi(part_[2]));
        const auto status = Capture_Transfer(static_cast<std::uint32_t>(std::stoi(part_[3])),
                                             part_[1] == "write" ? 1 : 0, room.data(),
                                             static_cast<std::uint32_t>(room.size()), kind);
        if (status != (part_[6].matched ? 1 : 0) || g_dataBuffer != nullptr)
            throw std::runtime_error("it came to another end");
        if (part_[5].matched &&
            QByteArray(reinterpret_cast<const char*>(room.data()), std::ssize(room)).toHex() !=
                part_.str(5).c_str())
            throw std::runtime_error("something else was read");
    }

    /// Does something, once all that came of what was done before has been expected.
    void act(const std::function<void()>& deed) {
        expectNothingMore();
        const NextBox box(std::exchange(answer_, QMessageBox::RejectRole));
        deed();
        QCoreApplication::processEvents();
        stage_.camera.setWait([](auto) {});
        traces_.clear();
        std::erase(log_, "");  // what was as it should be meanwhile
        collect(statement_ == "load");
        if (box.said() != std::exchange(question_, {}))
            throw std::runtime_error("the box said: " + box.said());
    }

    /// Takes in what has reached the camera and the log. What a load reads and traces is left out.
    void collect(bool loaded) {
        static const std::regex traces("(g_length|bmRequestType2|intval:|set:length:|viewLayer).*");
        for (const auto& record : stage_.camera.requests())
            if (!stage_.isForeign(record) && (!loaded || record.bRequest == SET_CUR))
                requests_.push_back(wireText(record));
        stage_.camera.clearRequests();
        for (const std::string& line : stage_.log.take(loaded ? "CameraControl" : ""))
            if (std::regex_match(line, traces))
                traces_.insert(line);
            else
                log_.push_back(line);
    }

    const Stage& stage_;
    std::string statement_;
    std::smatch part_;  // of the statement
    QMessageBox::ButtonRole answer_ = QMessageBox::RejectRole;
    std::string question_;  // what the next box is to say
    std::deque<std::string> requests_;
    std::deque<std::string> log_;
    std::set<std::string> traces_;  // of the last deed
    std::set<std::string> unseen_;  // what widgets are to show meanwhile
};

}  // namespace

std::vector<Exchange> readExchanges(std::initializer_list<const char*> files,
                                    const std::string& stage) {
    static const std::regex parts("(?:(direct|kernel): *)?(== )?(.*?) *");
    std::vector<Exchange> blocks;
    for (const char* name : files) {
        const std::string path = std::string(QUELVO_EXCHANGES) + name;
        std::ifstream file(path);
        std::string text;
        for (int line = 1; std::getline(file, text); ++line) {
            std::istringstream statements(text.substr(0, text.find('#')));
            while (std::getline(statements >> std::ws, text, ';')) {
                std::smatch part;
                std::regex_match(text, part, parts);
                const bool taken = !part[1].matched || part[1] == stage;
                if (part[2].matched)
                    blocks.push_back({path, line, taken ? part.str(3) : "", {}});
                else if (taken)
                    blocks.back().statements.emplace_back(line, part[3]);
            }
        }
        if (blocks.empty() || blocks.back().file != path)
            throw std::runtime_error("no exchanges in " + path);
    }
    std::erase_if(blocks, [](const Exchange& block) { return block.name.empty(); });
    return blocks;
}

void perform(const Exchange& exchange, const Stage& stage) {
    Performance performance(stage);
    std::pair<int, std::string> current{exchange.line, ""};
    try {
        for (const auto& statement : exchange.statements) {
            current = statement;
            performance.perform(statement.second);
        }
        performance.end();
    } catch (const std::exception& error) {
        ADD_FAILURE_AT(exchange.file.c_str(), current.first)
            << current.second << ": " << error.what();
    }
    stage.camera.setFaults({});
}
