// The outcome of every unit read or write.
#pragma once

enum class IoStatus { ok, end, error };
