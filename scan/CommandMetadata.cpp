#include "scan/CommandMetadata.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <span>

namespace tidewick
{
namespace
{

/// Two alternatives; the second is often empty.
using Words = std::array<QStringView, 2>;

struct Framework
{
    Words inCommandLine; // empty: any command line matches
    QStringView name;
};

/// The frameworks of one runtime; the first that matches counts.
struct Runtime
{
    Words inCommand;
    std::span<const Framework> frameworks;
};

constexpr auto node = std::to_array<Framework>({
    {{u"next dev", u"next start"}, u"Next.js"},
    {{u"react-scripts"}, u"React"},
    {{u"vite"}, u"Vite"},
    {{u"nuxt"}, u"Nuxt"},
    {{u"remix"}, u"Remix"},
    {{u"astro"}, u"Astro"},
    {{u"svelte"}, u"SvelteKit"},
    {{u"vue"}, u"Vue"},
    {{u"angular", u"ng serve"}, u"Angular"},
    {{u"gatsby"}, u"Gatsby"},
    {{u"webpack-dev-server"}, u"Webpack"},
    {{u"parcel"}, u"Parcel"},
    {{u"nodemon"}, u"Nodemon"},
    {{u"express"}, u"Express"},
    {{u"fastify"}, u"Fastify"},
    {{u"nestjs", u"nest start"}, u"NestJS"},
});

constexpr auto python = std::to_array<Framework>({
    {{u"manage.py runserver", u"django"}, u"Django"},
    {{u"flask"}, u"Flask"},
    {{u"uvicorn", u"fastapi"}, u"FastAPI"},
    {{u"streamlit"}, u"Streamlit"},
    {{u"gradio"}, u"Gradio"},
    {{u"gunicorn"}, u"Gunicorn"},
});

constexpr auto ruby = std::to_array<Framework>({
    {{u"rails s"}, u"Rails"},
    {{u"sinatra"}, u"Sinatra"},
    {{u"jekyll"}, u"Jekyll"},
    {{u"middleman"}, u"Middleman"},
});

constexpr auto php = std::to_array<Framework>({
    {{u"artisan serve"}, u"Laravel"},
    {{u"symfony"}, u"Symfony"},
    {{u"-S localhost", u"-S 127.0.0.1"}, u"PHP Server"},
});

constexpr auto java = std::to_array<Framework>({{{u"spring"}, u"Spring Boot"}});
constexpr auto go = std::to_array<Framework>({{{u"run"}, u"Go"}});
constexpr auto deno = std::to_array<Framework>({{{}, u"Deno"}});
constexpr auto bun = std::to_array<Framework>({{{}, u"Bun"}});

/// A process may belong to several groups; the last group that finds a framework counts.
constexpr auto runtimes = std::to_array<Runtime>({
    {{u"node"}, node},
    {{u"python", u"Python"}, python},
    {{u"ruby", u"puma"}, ruby},
    {{u"php"}, php},
    {{u"java"}, java},
    {{u"go"}, go},
    {{u"deno"}, deno},
    {{u"bun"}, bun},
});

constexpr std::array<QStringView, 4> scriptSuffixes{u".js", u".ts", u".mjs", u".cjs"};

bool containsAny(const QString &text, const Words &words)
{
    return std::any_of(words.begin(), words.end(), [&text](QStringView word) {
        return !word.isEmpty() && text.contains(word);
    });
}

bool isScript(QStringView token)
{
    return std::any_of(scriptSuffixes.begin(), scriptSuffixes.end(),
                       [token](QStringView suffix) { return token.endsWith(suffix); });
}

} // namespace

QMap<QString, QString> extractMetadata(const QString &from, const QString &command)
{
    QMap<QString, QString> metadata;
    for (const Runtime &runtime : runtimes) {
        if (!containsAny(command, runtime.inCommand))
            continue;
        const auto match = std::find_if(
            runtime.frameworks.begin(), runtime.frameworks.end(), [&from](const Framework &rule) {
                return rule.inCommandLine[0].isEmpty() || containsAny(from, rule.inCommandLine);
            });
        if (match != runtime.frameworks.end())
            metadata.insert(QStringLiteral("framework"), match->name.toString());
    }
    if (command.contains(u"node")) {
        const auto tokens = QStringView(from).split(u' ');
        const auto script = std::find_if(tokens.begin(), tokens.end(), isScript);
        if (script != tokens.end())
            metadata.insert(QStringLiteral("script"), script->toString());
    }
    if (command.contains(u"docker") || from.contains(u"docker-proxy"))
        metadata.insert(QStringLiteral("container"), QStringLiteral("Docker"));
    return metadata;
}

} // namespace tidewick
