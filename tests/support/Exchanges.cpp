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

/// Whether a line of the log traces a transfer, which nobody has to expect.
bool isTrace(const std::string& line) {
    static const std::regex form("(g_length|bmRequestType2|intval:|set:length:|viewLayer).*");
    return std::regex_match(line, form);
}

class Performance {
  public:
    explicit Performance(const Stage& stage) : stage_(stage) {}

    void perform(const std::string& statement) {
        const auto known = std::ranges::find_if(statements_, [&](const Statement& one) {
            return std::regex_match(statement, part_, one.form);
        });
        expect(known != statements_.end(), "no such statement");
        known->deed();
    }

    void end() {
        expectNothingMore();
        expect(unseen_.empty(), "nobody looked meanwhile");
    }

  private:
    using Deed = std::function<void()>;
    using Faults = virtualcam::Faults;

    struct Statement {
        Statement(const char* itsForm, Deed itsDeed) : form(itsForm), deed(std::move(itsDeed)) {}
        std::regex form;
        Deed deed;
    };

    static void expect(bool holds, const std::string& otherwise) {
        if (!holds)
            throw std::runtime_error(otherwise);
    }

    /// Takes the first of `came`, which must be as `wanted` says; "..." at its end leaves it open.
    static void expectNext(std::deque<std::string>& came, const std::string& wanted) {
        expect(!came.empty(), "nothing more came");
        const std::string first = came.front();
        came.pop_front();
        const auto known = wanted.ends_with("...") ? wanted.size() - 3 : std::string::npos;
        expect(first.substr(0, known) == wanted.substr(0, known), "but this came: " + first);
    }

    void expectNothingMore() {
        std::erase_if(log_, isTrace);
        for (const auto* left : {&requests_, &log_})
            expect(left->empty(), "nobody expected: " + (left->empty() ? "" : left->front()));
    }

    // The parts of the statement.
    int number(std::size_t part) const { return std::stoi(part_[part]); }
    virtualcam::ControlId control(std::size_t part) const {
        return *controlsIn(part_[part]).begin();
    }
    std::vector<std::uint8_t> bytes(std::size_t part) const {
        const QByteArray bytes = QByteArray::fromHex(part_.str(part).c_str());
        return {bytes.begin(), bytes.end()};
    }

    void expectLine() {
        while (!log_.empty() && isTrace(log_.front()) && log_.front() != part_[1])
            log_.pop_front();
        expectNext(log_, part_[1]);
    }

    void expectRequests() {
        for (int count = number(1); count > 0; --count)
            expectNext(requests_, "...");
    }

    void expectWidgets() {
        const std::string found = difference(stage_.hands, part_[0]);
        expect(found.empty(), found);
    }

    void expectWidgetsMeanwhile() {
        unseen_.insert(part_[1]);
        stage_.camera.setFaults({.delay = std::chrono::milliseconds(1)});
        stage_.camera.setWait([this, wanted = part_.str(1)](auto) {
            unseen_.erase(wanted);
            log_.push_back(difference(stage_.hands, wanted));
        });
    }

    void forget() {
        requests_.clear();
        log_.clear();
    }

    void answerNextBox(QMessageBox::ButtonRole answer) {
        answer_ = answer;
        question_ = part_[1];
    }

    /// Breaks one more thing of the camera.
    Deed fault(const std::function<void(Faults&)>& plant) {
        return [this, plant] {
            Faults faults = stage_.camera.faults();
            plant(faults);
            stage_.camera.setFaults(faults);
            stage_.camera.setWait([](auto) {});
        };
    }

    /// A step of opening that fails with an error.
    Deed fault(IOReturn Faults::*step) {
        return fault([=, this](Faults& faults) { faults.*step = number(1); });
    }

    /// Does something, once all that came of what was done before has been expected. Takes in what
    /// then reaches the camera and the log, but for what a load reads and traces.
    Deed act(const Deed& deed, bool isLoad = false) {
        return [=, this] {
            expectNothingMore();
            const NextBox box(std::exchange(answer_, QMessageBox::RejectRole));
            deed();
            QCoreApplication::processEvents();
            stage_.camera.setWait([](auto) {});
            std::erase(log_, "");  // what was as it should be meanwhile
            for (const auto& record : stage_.camera.requests())
                if (!stage_.isForeign(record) && (!isLoad || record.bRequest == SET_CUR))
                    requests_.push_back(wireText(record));
            stage_.camera.clearRequests();
            std::ranges::move(stage_.log.take(isLoad ? "CameraControl" : ""),
                              std::back_inserter(log_));
            expect(box.said() == std::exchange(question_, {}), "the box said: " + box.said());
        };
    }

    void open() {
        expect(OpenCameraByUniqueID(part_.str(1)) == number(2), "it came to another end");
    }

    /// Transfers what the statement says. Behind the room for it the sanitizer watches.
    void transfer() {
        std::vector<std::uint8_t> room = bytes(4);
        const auto status = Capture_Transfer(static_cast<std::uint32_t>(number(3)),
                                             part_[1] == "read" ? captureRead : captureWrite,
                                             room.data(), static_cast<std::uint32_t>(room.size()),
                                             static_cast<std::uint32_t>(number(2)));
        expect(status == (part_[6].matched ? 1 : 0) && g_dataBuffer == nullptr,
               "it came to another end");
        expect(!part_[5].matched || room == bytes(5), "something else was read");
    }

    const Stage& stage_;
    WindowHands& hands_ = stage_.hands;
    std::smatch part_;  // of the statement
    QMessageBox::ButtonRole answer_ = QMessageBox::RejectRole;
    std::string question_;  // what the next box is to say
    std::deque<std::string> requests_;
    std::deque<std::string> log_;
    std::set<std::string> unseen_;  // what widgets are to show meanwhile

    const std::vector<Statement> statements_ = {
        {"> (.*)", [this] { expectNext(requests_, part_[1]); }},
        {"log (.*)", [this] { expectLine(); }},
        {"skip (\\d+)", [this] { expectRequests(); }},
        {"m_.*", [this] { expectWidgets(); }},
        {"meanwhile (.*)", [this] { expectWidgetsMeanwhile(); }},
        {"forget", [this] { forget(); }},
        {"answer OK (.*)", [this] { answerNextBox(QMessageBox::AcceptRole); }},
        {"answer Cancel (.*)", [this] { answerNextBox(QMessageBox::RejectRole); }},
        {"close (.*)", [this] { answerNextBox(QMessageBox::InvalidRole); }},
        {"mend", fault([](Faults& faults) { faults = {}; })},
        {"stall (.*)", fault([this](Faults& faults) { faults.stalled = controlsIn(part_[1]); })},
        {"(length|short) (\\S+) (\\d+)", fault([this](Faults& faults) {
             auto& broken = part_[1] == "length" ? faults.lengths : faults.shortReads;
             broken[control(2)] = static_cast<std::uint16_t>(number(3));
         })},
        {"delay (\\d+)",
         fault([this](Faults& faults) { faults.delay = std::chrono::milliseconds(number(1)); })},
        {"fail noVideoControl", fault([](Faults& faults) { faults.noVideoControl = true; })},
        {"fail deviceCreatePlugIn (\\d+)", fault(&Faults::deviceCreatePlugIn)},
        {"fail deviceQueryInterface (\\d+)", fault(&Faults::deviceQueryInterface)},
        {"fail deviceInterfaces (\\d+)", fault(&Faults::deviceInterfaces)},
        {"fail interfaceCreatePlugIn (\\d+)", fault(&Faults::interfaceCreatePlugIn)},
        {"fail interfaceQueryInterface (\\d+)", fault(&Faults::interfaceQueryInterface)},
        {"fail interfaceOpen (\\d+)", fault(&Faults::interfaceOpen)},
        {"load", act(stage_.loadPages, true)},
        {"click (\\S+)", act([this] { hands_.click(part_[1]); })},
        {"choose (\\S+) (\\S+)", act([this] { hands_.choose(part_[1], part_[2]); })},
        {"move (\\S+) (\\S+)", act([this] { hands_.moveSlider(part_[1], number(2)); })},
        {"untick (\\S+)",
         act([this] { hands_.slider(part_[1]).setTickPosition(QSlider::NoTicks); })},
        {"maximum (\\S+) (\\S+)", act([this] { hands_.slider(part_[1]).setMaximum(number(2)); })},
        {"set (\\d+/\\d+) ([ 0-9a-f]+)",
         act([this] { setInCamera(stage_.camera, control(1), bytes(2)); })},
        {"open (.+) = (\\d)", act([this] { open(); })},
        {"(read|write) (-?\\d)/(\\d+) ([0-9a-f]+)(?: = ([0-9a-f]+)| (fails))?",
         act([this] { transfer(); })},
    };
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
