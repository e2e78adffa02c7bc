// A number in a program's array, at any alignment.
#pragma once

#include <cstring>

template <class Value>
class Stored {
public:
    operator Value() const
    {
        Value value;
        memcpy(&value, bytes_, sizeof value);
        return value;
    }
    Stored &operator=(Value value)
    {
        memcpy(bytes_, &value, sizeof value);
        return *this;
    }

private:
    unsigned char bytes_[sizeof(Value)];
};

template <class Value>
Stored<Value> *storedAt(void *array)
{
    return static_cast<Stored<Value> *>(array);
}
template <class Value>
const Stored<Value> *storedAt(const void *array)
{
    return static_cast<const Stored<Value> *>(array);
}
