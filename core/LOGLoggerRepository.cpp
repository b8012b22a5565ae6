#include "core/LOGLoggerRepository.h"

LOGLoggerRepository::~LOGLoggerRepository() = default;
