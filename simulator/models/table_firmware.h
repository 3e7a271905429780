#pragma once

#include "simulator/firmware.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// @file
/// What a firmware model is written in: its state, a table of the commands that it takes, a table of what it
/// does by itself, and their handlers. Everything else stands here.

namespace pyrux::sim {

/// The first bytes of a command, as a protocol's table writes them: "51/52 00", "80 0B 02 .. 0.". A dot
/// stands for any digit, and a slash between the two values that a byte may have.
class Head {
public:
    template <std::size_t size>
    consteval Head(const char (&text)[size]) // NOLINT(google-explicit-constructor): a table row reads so
    {
        for (std::size_t i = 0; i + 1 < size;) {
            Place& place = places.at(count++);
            place.takeDigits(text[i], text[i + 1], place.value);
            i += 2;
            place.other = place.value;
            if (i + 1 < size && text[i] == '/') {
                place.takeDigits(text[i + 1], text[i + 2], place.other);
                i += 3;
            }
            if (i + 1 < size && text[i++] != ' ')
                throw "a blank stands between two bytes";
        }
    }

    /// A command that is this text and ends there, as "[M.]"; a dot stands for any character.
    template <std::size_t size>
    static consteval Head text(const char (&characters)[size])
    {
        Head head("");
        for (const char one : characters) {
            Place& place = head.places.at(head.count++);
            place.mask = one == '.' ? 0x00 : 0xFF;
            place.value = place.other = one == '.' ? std::uint8_t(0) : std::uint8_t(one);
        }
        return head;
    }

    /// Places past the command's end count as zeros.
    bool fits(Bytes command) const;

private:
    struct Place {
        std::uint8_t value = 0;
        std::uint8_t other = 0;
        std::uint8_t mask = 0;

        constexpr void takeDigits(char high, char low, std::uint8_t& to)
        {
            to = std::uint8_t(digit(high) << 4 | digit(low));
            mask = std::uint8_t((high == '.' ? 0 : 0xF0) | (low == '.' ? 0 : 0x0F));
        }
        static constexpr int digit(char one)
        {
            if (one == '.')
                return 0;
            if (one >= '0' && one <= '9')
                return one - '0';
            if (one >= 'A' && one <= 'F')
                return one - 'A' + 10;
            throw "no digit";
        }
    };

    std::array<Place, 12> places{};
    std::size_t count = 0;
};

/// An output report with zeros after its end.
class Command {
public:
    Command(const Channel& on, Bytes payload) : channel(on), payload(payload.begin(), payload.end()) {}

    std::uint8_t operator[](std::size_t place) const { return place < payload.size() ? payload[place] : 0; }
    std::uint16_t word(std::size_t from) const
    {
        return std::uint16_t((*this)[from] | (*this)[from + 1] << 8);
    }
    std::vector<std::uint8_t> bytes(std::size_t from, std::size_t count) const;
    void copy(std::size_t from, std::span<std::uint8_t> to) const;
    template <std::size_t size>
    std::array<std::uint8_t, size> array(std::size_t from) const
    {
        std::array<std::uint8_t, size> taken;
        copy(from, taken);
        return taken;
    }
    Bytes all() const { return payload; }

    const Channel channel;

private:
    std::vector<std::uint8_t> payload;
};

/// What a device says to a command, before it has the form that its protocol gives it; to something that it
/// does by itself likewise.
struct Answer {
    enum class Kind { silence, accepted, refused, reports };

    Kind kind = Kind::silence;
    std::vector<std::uint8_t> data = {}; ///< Of an accepted command.
    std::size_t from = 0;                ///< Where they stand in the report; 0: at the usual place.
    std::uint8_t code = 1;               ///< Of a refusal.
    std::vector<std::vector<std::uint8_t>> reports = {}; ///< As they are.
    std::optional<Channel> on = {}; ///< None: where the command came from, or the control channel.
};

inline Answer silence()
{
    return {};
}

inline Answer accepted()
{
    return {.kind = Answer::Kind::accepted};
}

/// Silence where a protocol has no refusals; what a device does by itself cannot happen now.
inline Answer refused(std::uint8_t code = 1)
{
    return {.kind = Answer::Kind::refused, .code = code};
}

inline Answer accepted(bool good)
{
    return good ? accepted() : refused();
}

inline Answer report(std::vector<std::uint8_t> payload)
{
    return {.kind = Answer::Kind::reports, .reports = {std::move(payload)}};
}

/// The same by another way than that of the command, or of the commands.
inline Answer reportOn(const Channel& on, std::vector<std::uint8_t> payload)
{
    return {.kind = Answer::Kind::reports, .reports = {std::move(payload)}, .on = on};
}

/// Bytes, from those of the parts: each a byte or a range of them.
template <class... Parts>
std::vector<std::uint8_t> joined(const Parts&... parts)
{
    std::vector<std::uint8_t> all;
    const auto add = [&](const auto& part) {
        if constexpr (std::integral<std::remove_cvref_t<decltype(part)>>)
            all.push_back(std::uint8_t(part));
        else
            all.insert(all.end(), part.begin(), part.end());
    };
    (add(parts), ...);
    return all;
}

/// An accepted command with data.
template <class... Parts>
Answer told(const Parts&... parts)
{
    return {.kind = Answer::Kind::accepted, .data = joined(parts...)};
}

/// One setting that a pair of commands writes and reads: an accepted command that has written it, or the
/// setting, which stands in both from the same place on.
Answer carried(bool write, const Command& command, std::size_t from, std::span<std::uint8_t> setting);

/// How a protocol answers.
struct Form {
    std::size_t echoed = 4;   ///< So many bytes of the command begin the answer.
    std::uint8_t added = 0;   ///< To the first of them.
    std::uint8_t success = 0; ///< The byte after them; 0 is no different from nothing.
    std::uint8_t refusal = 0; ///< The same of a refusal, with the code after it. 0: refusals are silence.
    std::size_t dataFrom = 4;
};

/// `41 80 ..` is answered by its first four bytes, with data from byte 4 on.
inline constexpr Form echoForm;
/// `80 command operation ..` is answered by `80 command 03`, with data from byte 3 on, or `80 command 04
/// code`.
inline constexpr Form hubForm{.echoed = 2, .success = 3, .refusal = 4, .dataFrom = 3};

/// States of a device, a bit each.
using States = std::uint32_t;
inline constexpr States anyState = ~States(0);

/// A handler. It may be written without the argument, if it needs none, and without a result, for silence.
template <class Argument>
class Handler {
public:
    template <class Function>
    requires(std::invocable<Function&> || std::invocable<Function&, const Argument&>)
        Handler(Function function) // NOLINT(google-explicit-constructor): a table row reads so
        : call([function](const Argument& argument) mutable {
              const auto run = [&] {
                  if constexpr (std::invocable<Function&>)
                      return function();
                  else
                      return function(argument);
              };
              if constexpr (std::is_void_v<decltype(run())>) {
                  run();
                  return Answer();
              } else {
                  return Answer(run());
              }
          })
    {
    }

    Answer operator()(const Argument& argument) const { return call(argument); }

private:
    std::function<Answer(const Argument&)> call;
};

/// A handler that does something, and accepts the command.
template <class Function>
auto done(Function function)
{
    return [take = Handler<Command>(std::move(function))](const Command& command) {
        take(command);
        return accepted();
    };
}

/// A row of the command table.
struct Row {
    Row(Head first, Handler<Command> handler) : head(first), take(std::move(handler)) {}
    Row(Head first, States taken, Handler<Command> handler) : head(first), in(taken), take(std::move(handler))
    {
    }

    Head head;
    States in = anyState;      ///< The command is taken in these.
    std::optional<Channel> on; ///< And here; none: anywhere.
    Handler<Command> take;
};

/// A value of an event.
struct Value {
    const char* name;
    int least;
    int most;
};

/// A row of the table of what a device does by itself.
struct Event {
    const char* name;
    std::vector<Value> values;
    Handler<std::vector<int>> take; ///< Gets as many values as there are to be, each in its range.
};

/// A firmware that is its tables. A command goes to the first row that fits it and the device's state; no
/// such row is silence. Handlers run one at a time, with `mutex` held, and their reports leave after that.
class TableFirmware : public Firmware {
public:
    const Identity& identity() const final { return self; }
    void powerOn() override;
    void output(Bytes payload) final { outputOn(controlChannel(self), payload); }
    void outputOn(const Channel& on, Bytes payload) final;
    bool happen(const std::string& event, const std::vector<int>& values) final;
    std::vector<std::string> events() const final;
    Picture picture() const final;

    int frames() const { return copyOf(frameCount); } ///< Frames of the host that were shown, since power-on.

protected:
    TableFirmware(Identity identity, const Form& form) : self(std::move(identity)), form(form) {}

    /// For constructors. What comes later goes in front, so that a model may take its family's commands in
    /// another way; its events come after the others.
    void takes(std::vector<Row> rows);
    void takes(const Channel& on, std::vector<Row> rows); ///< Only there.
    void does(std::vector<Event> rows);

    /// A value as it is now, and what a function finds, for any thread.
    template <class Type>
    Type copyOf(const Type& value) const
    {
        const std::lock_guard lock(mutex);
        return value;
    }
    template <class Function>
    auto found(Function function) const
    {
        const std::lock_guard lock(mutex);
        return function();
    }
    States stateNow() const { return copyOf(stateBit); }

    // The rest is for handlers, or called with `mutex` held.

    /// Power has come: what was not saved is lost.
    virtual void restart() {}
    virtual Picture drawn() const { return {}; }

    void setState(States bit) { stateBit = bit; }
    States state() const { return stateBit; }
    void countFrame() { ++frameCount; }

    mutable std::mutex mutex;

private:
    std::vector<std::vector<std::uint8_t>> formed(const Answer& answer, const Command* command) const;

    const Identity self;
    const Form form;
    std::vector<Row> rows;
    std::vector<Event> happenings;
    States stateBit = 1;
    int frameCount = 0;
};

/// Several reports that make one transfer.
class Transfer {
public:
    /// Forgets what came before, and takes a transfer of so many bytes from its first report on.
    void begin(std::size_t bytes);
    void end() { *this = {}; }
    /// Adds the next report's piece. False: it is none that comes next, and the transfer is over.
    bool add(std::uint8_t number, Bytes piece);
    bool whole() const { return running && got == data.size(); }
    explicit operator bool() const { return running; }

    std::vector<std::uint8_t> data;

private:
    bool running = false;
    std::uint8_t next = 0;
    std::size_t got = 0;
};

/// What a device tells of itself.
/// @param serialName  begins the serial number; null: the product's name without blanks
Identity identityOf(const char* product, std::uint16_t pid, std::uint16_t release,
                    std::vector<Collection> collections, int controlInterface,
                    const char* serialName = nullptr);

// The interfaces that several models have.

/// A boot mouse or keyboard on interface 0, the commands on interface 1.
std::vector<Collection> besideMouse();
std::vector<Collection> besideKeyboard();
/// The commands on interface 0, another vendor page on interface 1.
std::vector<Collection> besideVendorPage();

} // namespace pyrux::sim
