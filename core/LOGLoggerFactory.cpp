#include "core/LOGLoggerFactory.h"

LOGLoggerFactory::~LOGLoggerFactory() = default;
