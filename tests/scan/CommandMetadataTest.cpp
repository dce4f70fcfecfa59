#include "scan/CommandMetadata.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

using namespace tidewick;

struct MetadataRow
{
    const char *name;
    const char *command;
    const char *from;
    std::map<std::string, std::string> metadata;
};

class Metadata : public testing::TestWithParam<MetadataRow>
{
};

TEST_P(Metadata, isToldByNameAndCommandLine)
{
    const auto metadata =
        extractMetadata(QString::fromUtf8(GetParam().from), QString::fromUtf8(GetParam().command));
    std::map<std::string, std::string> found;
    for (auto entry = metadata.begin(); entry != metadata.end(); ++entry)
        found.emplace(entry.key().toStdString(), entry.value().toStdString());
    EXPECT_EQ(found, GetParam().metadata);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Metadata,
    testing::Values(
        MetadataRow{"nextDev", "node", "node next dev", {{"framework", "Next.js"}}},
        MetadataRow{"nextStart", "node", "node next start", {{"framework", "Next.js"}}},
        MetadataRow{"react", "node", "node react-scripts start", {{"framework", "React"}}},
        MetadataRow{"vite", "node", "node vite", {{"framework", "Vite"}}},
        MetadataRow{"nuxt", "node", "node nuxt", {{"framework", "Nuxt"}}},
        MetadataRow{"remix", "node", "node remix dev", {{"framework", "Remix"}}},
        MetadataRow{"astro", "node", "node astro dev", {{"framework", "Astro"}}},
        MetadataRow{"svelte", "node", "node svelte", {{"framework", "SvelteKit"}}},
        MetadataRow{"sveltekit", "node", "node sveltekit", {{"framework", "SvelteKit"}}},
        MetadataRow{"vue", "node", "node vue-cli-service serve", {{"framework", "Vue"}}},
        MetadataRow{"angular", "node", "node angular", {{"framework", "Angular"}}},
        MetadataRow{"ngServe", "node", "node ng serve", {{"framework", "Angular"}}},
        MetadataRow{"gatsby", "node", "node gatsby develop", {{"framework", "Gatsby"}}},
        MetadataRow{"webpack", "node", "node webpack-dev-server", {{"framework", "Webpack"}}},
        MetadataRow{"parcel", "node", "node parcel", {{"framework", "Parcel"}}},
        MetadataRow{"nodemon", "node", "node nodemon", {{"framework", "Nodemon"}}},
        MetadataRow{"express", "node", "node express", {{"framework", "Express"}}},
        MetadataRow{"fastify", "node", "node fastify", {{"framework", "Fastify"}}},
        MetadataRow{"nestjs", "node", "node nestjs", {{"framework", "NestJS"}}},
        MetadataRow{"nestStart", "node", "node nest start", {{"framework", "NestJS"}}},
        MetadataRow{"djangoManage", "python3", "manage.py runserver", {{"framework", "Django"}}},
        MetadataRow{"django", "python3", "django", {{"framework", "Django"}}},
        MetadataRow{"flaskRun", "python3", "-m flask run", {{"framework", "Flask"}}},
        MetadataRow{"flask", "python3", "flask", {{"framework", "Flask"}}},
        MetadataRow{"uvicorn", "python3", "uvicorn main:app", {{"framework", "FastAPI"}}},
        MetadataRow{"fastapi", "python3", "fastapi", {{"framework", "FastAPI"}}},
        MetadataRow{"streamlit", "python3", "streamlit", {{"framework", "Streamlit"}}},
        MetadataRow{"gradio", "python3", "gradio", {{"framework", "Gradio"}}},
        MetadataRow{"gunicorn", "python3", "gunicorn", {{"framework", "Gunicorn"}}},
        MetadataRow{"pythonAlone", "python3", "python3 app.py", {}},
        MetadataRow{"railsServer", "ruby", "rails server", {{"framework", "Rails"}}},
        MetadataRow{"railsS", "ruby", "rails s", {{"framework", "Rails"}}},
        MetadataRow{"sinatra", "ruby", "sinatra", {{"framework", "Sinatra"}}},
        MetadataRow{"jekyll", "ruby", "jekyll", {{"framework", "Jekyll"}}},
        MetadataRow{"middleman", "ruby", "middleman", {{"framework", "Middleman"}}},
        MetadataRow{"rubyAlone", "ruby", "ruby app.rb", {}},
        MetadataRow{"laravel", "php", "php artisan serve", {{"framework", "Laravel"}}},
        MetadataRow{"symfony", "php", "symfony", {{"framework", "Symfony"}}},
        MetadataRow{"phpLocalhost", "php", "php -S localhost:8000", {{"framework", "PHP Server"}}},
        MetadataRow{"phpLoopback", "php", "php -S 127.0.0.1:8000", {{"framework", "PHP Server"}}},
        MetadataRow{"phpAlone", "php", "php app.php", {}},
        MetadataRow{"puma", "puma", "rails server", {{"framework", "Rails"}}},
        MetadataRow{"spring", "java", "java -jar spring.jar", {{"framework", "Spring Boot"}}},
        MetadataRow{"javaAlone", "java", "java -jar app.jar", {}},
        MetadataRow{"goRun", "go", "go run .", {{"framework", "Go"}}},
        MetadataRow{"goAlone", "go", "/tmp/go-build/main", {}},
        MetadataRow{"deno", "deno", "", {{"framework", "Deno"}}},
        MetadataRow{"bun", "bun", "anything", {{"framework", "Bun"}}},
        MetadataRow{"docker", "com.docker.backend", "", {{"container", "Docker"}}},
        MetadataRow{"dockerProxy",
                    "vpnkit",
                    "/usr/local/bin/docker-proxy -proto tcp",
                    {{"container", "Docker"}}},
        MetadataRow{"nextWithoutScript",
                    "node",
                    "node /app/node_modules/.bin/next dev",
                    {{"framework", "Next.js"}}},
        MetadataRow{"scriptAlone", "node", "node server.js", {{"script", "server.js"}}},
        MetadataRow{"scriptKeepsItsPath",
                    "node",
                    "node /srv/app/index.mjs --port 3000",
                    {{"script", "/srv/app/index.mjs"}}},
        MetadataRow{"emptyTokensNeverMatch", "node", "node  a.ts", {{"script", "a.ts"}}},
        MetadataRow{"commonJs", "node", "node a.cjs", {{"script", "a.cjs"}}},
        MetadataRow{"firstScriptCounts", "node", "node b.txt c.mjs d.js", {{"script", "c.mjs"}}},
        MetadataRow{"scriptNextToAFramework",
                    "node",
                    "node /x/vite.js",
                    {{"framework", "Vite"}, {"script", "/x/vite.js"}}},
        MetadataRow{"suffixIsCaseSensitive", "node", "node A.JS", {}},
        MetadataRow{"tabSeparatesNothing", "node", "node\tx.js y", {{"script", "node\tx.js"}}},
        MetadataRow{"scriptNeedsNode", "deno", "deno run a.ts", {{"framework", "Deno"}}},
        MetadataRow{"nodeInsideTheName", "node-22", "node a.js", {{"script", "a.js"}}},
        MetadataRow{"upperCaseNode", "NODE", "node vite server.js", {}},
        MetadataRow{
            "upperCasePython", "Python", "/usr/bin/python3 -m flask run", {{"framework", "Flask"}}},
        MetadataRow{
            "pythonWithVersion", "python3.1", "uvicorn main:app", {{"framework", "FastAPI"}}},
        MetadataRow{"firstRuleWins",
                    "python3",
                    "gunicorn -k uvicorn.workers.UvicornWorker",
                    {{"framework", "FastAPI"}}},
        MetadataRow{"keywordsAreCaseSensitive", "node", "node VITE", {}},
        MetadataRow{
            "mongodHoldsGo",
            "mongod",
            "mongod --config /usr/local/etc/mongod.conf --fork --pidfilepath /var/run/m.pid",
            {{"framework", "Go"}}},
        MetadataRow{"laterGroupReplaces", "nodego", "vite run", {{"framework", "Go"}}},
        MetadataRow{"laterGroupWithoutMatchKeeps", "nodego", "vite", {{"framework", "Vite"}}},
        MetadataRow{"nodeInDocker",
                    "docker-node",
                    "node vite.js",
                    {{"framework", "Vite"}, {"script", "vite.js"}, {"container", "Docker"}}},
        MetadataRow{"suffixInsideATokenIsNoScript",
                    "node",
                    "node package.json server.js",
                    {{"script", "server.js"}}},
        MetadataRow{"dockerInTheCommandLineIsNoContainer",
                    "node",
                    "node docker.js",
                    {{"script", "docker.js"}}},
        MetadataRow{"unknown", "nginx", "nginx: master process", {}},
        MetadataRow{"empty", "", "", {}}),
    rowName);

/// The keywords of one runtime, in the order in which they count.
struct OrderRow
{
    const char *name;
    const char *command;
    std::vector<std::pair<const char *, const char *>> keywords; // and their frameworks
};

class FrameworkOrder : public testing::TestWithParam<OrderRow>
{
};

TEST_P(FrameworkOrder, earlierRuleWinsOverEachLaterOne)
{
    const auto &keywords = GetParam().keywords;
    for (std::size_t first = 0; first < keywords.size(); ++first) {
        for (std::size_t second = first; second < keywords.size(); ++second) {
            const QString from =
                QStringLiteral("%1 %2").arg(QString::fromUtf8(keywords[second].first),
                                            QString::fromUtf8(keywords[first].first));
            EXPECT_EQ(extractMetadata(from, QString::fromUtf8(GetParam().command))
                          .value(QStringLiteral("framework")),
                      QString::fromUtf8(keywords[first].second))
                << from.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, FrameworkOrder,
                         testing::Values(OrderRow{"node",
                                                  "node",
                                                  {{"next dev", "Next.js"},
                                                   {"react-scripts", "React"},
                                                   {"vite", "Vite"},
                                                   {"nuxt", "Nuxt"},
                                                   {"remix", "Remix"},
                                                   {"astro", "Astro"},
                                                   {"svelte", "SvelteKit"},
                                                   {"vue", "Vue"},
                                                   {"angular", "Angular"},
                                                   {"gatsby", "Gatsby"},
                                                   {"webpack-dev-server", "Webpack"},
                                                   {"parcel", "Parcel"},
                                                   {"nodemon", "Nodemon"},
                                                   {"express", "Express"},
                                                   {"fastify", "Fastify"},
                                                   {"nestjs", "NestJS"}}},
                                         OrderRow{"python",
                                                  "python3",
                                                  {{"django", "Django"},
                                                   {"flask", "Flask"},
                                                   {"uvicorn", "FastAPI"},
                                                   {"streamlit", "Streamlit"},
                                                   {"gradio", "Gradio"},
                                                   {"gunicorn", "Gunicorn"}}},
                                         OrderRow{"ruby",
                                                  "ruby",
                                                  {{"rails server", "Rails"},
                                                   {"sinatra", "Sinatra"},
                                                   {"jekyll", "Jekyll"},
                                                   {"middleman", "Middleman"}}},
                                         OrderRow{"php",
                                                  "php",
                                                  {{"artisan serve", "Laravel"},
                                                   {"symfony", "Symfony"},
                                                   {"-S localhost", "PHP Server"}}}),
                         rowName);

struct Group
{
    const char *command;
    const char *keyword;
    const char *framework;
};

TEST(FrameworkGroups, laterGroupWinsOverEachEarlierOne)
{
    const std::vector<Group> groups{{"node", "vite", "Vite"},
                                    {"python", "flask", "Flask"},
                                    {"ruby", "jekyll", "Jekyll"},
                                    {"php", "symfony", "Symfony"},
                                    {"java", "spring", "Spring Boot"},
                                    {"go", "run", "Go"},
                                    {"deno", "", "Deno"},
                                    {"bun", "", "Bun"}};
    for (std::size_t later = 1; later < groups.size(); ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            const auto both = [&](const char *Group::*text) {
                return QStringLiteral("%1 %2").arg(QString::fromUtf8(groups[earlier].*text),
                                                   QString::fromUtf8(groups[later].*text));
            };
            EXPECT_EQ(extractMetadata(both(&Group::keyword), both(&Group::command))
                          .value(QStringLiteral("framework")),
                      QString::fromUtf8(groups[later].framework))
                << both(&Group::command).toStdString();
        }
    }
}
