#include "commissioning/Interaction.h"

#include "Base/GCException.h"

namespace commissioning {

std::string failureText(const std::exception_ptr &error) {
    try {
        std::rethrow_exception(error);
    } catch (const GenICam::GenericException &genicam) {
        return genicam.GetDescription();
    } catch (const std::exception &other) {
        return other.what();
    } catch (...) {
        return "Unknown exception occurred";
    }
}

} // namespace commissioning
