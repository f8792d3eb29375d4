#ifndef PLATFORM_MESSAGES_PAMESSAGE_H
#define PLATFORM_MESSAGES_PAMESSAGE_H

#include <utility>
#include <vector>

#include "platform/foundation/obx_string.h"

// A message of the catalogue with its parameters. A message with id 0 says that there is nothing to
// say: operations that report through a PaMessage leave it so on success.
class PaMessage {
  public:
    PaMessage() = default;
    explicit PaMessage(int id) : m_id(id) {}

    int ID() const { return m_id; }

    // The kind of message; 3 is an error.
    void Type(int type) { m_type = type; }
    int Type() const { return m_type; }

    // Sets the value of a parameter, named as in the catalogue ("_field_"). A name that the
    // message's text does not have throws a CException* in builds with assertions and is ignored in
    // others, so that a slip of ours cannot hide the error that is being reported.
    void SetParam(const Obx_String& name, const Obx_String& value);

    // The parameters that were set, as names and values.
    const std::vector<std::pair<Obx_String, Obx_String>>& Parameters() const {
        return m_parameters;
    }

    // The message's text with the parameters in place. A parameter that was not set stays as its
    // name. An id that the catalogue does not know gives a text that says so and lists the
    // parameters. Empty for id 0.
    Obx_String FullMsg() const;

  private:
    int m_id = 0;
    int m_type = 0;
    std::vector<std::pair<Obx_String, Obx_String>> m_parameters;
};

#endif
