#include "advice/KitGuide.h"

namespace {

constexpr char kIntroduction[] = R"(Links that start manifests, without a question
==============================================

These files let browsers start Norvik from links on pages of these origins, and no others:

)";

constexpr char kBefore[] = R"(
They are the second lock. The first is the permission file, permit.xml: it says which manifests may
run at all, whoever asks. On each machine links have to be switched on, as an administrator:

    norvik browser on

or with the feature BrowserLaunch of the installer. Without that nothing happens at a click. Without
these files a browser asks at each click.

The files
---------

)";

constexpr char kPlaces[] = R"(
Where they go
-------------

*.reg            Import on each machine as an administrator (reg import FILE), or put the values
                 into a group policy. A file sets the whole value: where the policy has entries for
                 other schemes, add the one of policy-value.json to them by hand. A scheme has one
                 entry only: browsers pass over a second one without a word.
policy-value.json
                 Paste it where your management asks for the value of the policy
                 AutoLaunchProtocolsFromOrigins, for Edge, Chrome or Firefox.
chromium-policy.json
                 /etc/chromium/policies/managed/ or /etc/opt/chrome/policies/managed/, under any
                 name that ends in .json.
firefox-policies.json
                 As policies.json in the folder 'distribution' of Firefox. A file that is there
                 already gets the entry added.
ie-mode-sites.xml
                 On a web server of yours that all machines reach. Its address goes into the policy
                 InternetExplorerIntegrationSiteList; ie-mode.reg has a line for it. A browser
                 processes one list: where you have one, add the sites to it and raise its version.
ie-mode.reg      It puts the sites into the trusted sites and allows controls to run there: this
                 holds for every trusted site. Zones know no ports, so a site's other ports are
                 trusted too. Both widths of norvik.dll have to be registered.

See at edge://policy, chrome://policy or about:policies whether the browser has read its policy, and
run 'norvik browser status' and 'norvik doctor' for the machine.

What a listed site must do
--------------------------

A browser asks which page starts the link, and nothing else. Whoever can make a listed site do it
starts permitted manifests on the machines of its visitors, without a question. So a listed site

- forbids being framed, on every page:
      Content-Security-Policy: frame-ancestors 'none'
      X-Frame-Options: DENY
  Else a page of somebody else shows the site in an invisible frame, and its visitors click there.
- has no open redirect: no address that sends a visitor wherever the address itself says. Else a
  link anywhere, to https://listed/go?to=norvik:..., starts a manifest as if the site had done it.
- shows no links and runs no scripts that others have written: no guest book, no foreign scripts.
- uses https. For http everybody on the way can speak as the site.

List as few origins as there are, and none where users put pages of their own.

What not to do
--------------

Never allow the scheme itself, for every page: not 'norvik:*' in URLAllowlist and not '*' as an
origin. Each lets every page of the web start manifests without a question. URLBlocklist with
'norvik:*' goes before the origins and shuts the door for a browser.
)";

}  // namespace

std::string KitGuide(const std::vector<std::string>& origins, const std::vector<KitFile>& files) {
  std::string guide = kIntroduction;
  for (const std::string& origin : origins)
    guide += "    " + origin + "\n";
  guide += kBefore;
  for (const KitFile& file : files)
    guide += file.name + "\n    " + file.purpose + "\n";
  return guide + kPlaces;
}
