// Asio's own functions, compiled once for every program instead of in each source that uses it.
#include <asio/impl/src.hpp>
